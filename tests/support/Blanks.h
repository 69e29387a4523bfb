#pragma once

#include <array>
#include <string_view>

namespace voxtrel {

using std::string_view_literals::operator""sv;

/// Every newline character.
inline constexpr std::array kNewlines = {"\n"sv,       "\v"sv,           "\f"sv,          "\r"sv,
                                         "\xC2\x85"sv, "\xE2\x80\xA8"sv, "\xE2\x80\xA9"sv};

/// Every character of Unicode's category Zs, and the tab.
inline constexpr std::array kWhitespace = {"\t"sv,           " "sv,
                                           "\xC2\xA0"sv,     "\xE1\x9A\x80"sv,
                                           "\xE2\x80\x80"sv, "\xE2\x80\x81"sv,
                                           "\xE2\x80\x82"sv, "\xE2\x80\x83"sv,
                                           "\xE2\x80\x84"sv, "\xE2\x80\x85"sv,
                                           "\xE2\x80\x86"sv, "\xE2\x80\x87"sv,
                                           "\xE2\x80\x88"sv, "\xE2\x80\x89"sv,
                                           "\xE2\x80\x8A"sv, "\xE2\x80\xAF"sv,
                                           "\xE2\x81\x9F"sv, "\xE3\x80\x80"sv};

}  // namespace voxtrel
