#pragma once

#include <string>
#include <string_view>

#include <tl/expected.hpp>

namespace voxtrel::quillback {

// The choice of a model in the engine's own section of the settings file:
//
//   [engine]
//   model = "base"

/// The chosen model; empty if there is none, or if `text` is not TOML.
std::string engineModelOf(std::string_view text);

/// `text` with `model` as the chosen one. It replaces the value that is there; otherwise its line goes
/// under the section's header, or into a new section at the end. Every other byte stays as it is, and
/// new lines end as the others do. `model` is a model's name and needs no escaping.
/// Fails by: why the text cannot be changed, as half a sentence: "it …".
tl::expected<std::string, std::string> withEngineModel(std::string_view text,
                                                       std::string_view model);

}  // namespace voxtrel::quillback
