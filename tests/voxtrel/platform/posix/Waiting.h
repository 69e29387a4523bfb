#pragma once

#include <chrono>
#include <functional>

namespace voxtrel {

/// Whether `holds` came true within `limit`; asks again every millisecond.
bool eventually(const std::function<bool()>& holds,
                std::chrono::milliseconds limit = std::chrono::seconds(20));

}  // namespace voxtrel
