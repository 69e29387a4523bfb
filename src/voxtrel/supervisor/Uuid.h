#pragma once

#include <string>

namespace voxtrel {

/// A random UUID (RFC 4122, version 4), such as "6FA459EA-EE8A-4CA4-894E-DB77E160355E".
std::string randomUuid();

}  // namespace voxtrel
