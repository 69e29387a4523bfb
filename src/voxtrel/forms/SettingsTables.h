#pragma once

#include <array>
#include <string_view>

namespace voxtrel {

/// A row of a picker: what it shows and what it stands for.
template <typename Value>
struct Choice {
  std::string_view display;
  Value value;
};

inline constexpr std::array<Choice<std::string_view>, 9> kHotkeyChoices = {{
    {"Right Command", "right_cmd"},
    {"Right Shift", "right_shift"},
    {"Right Control", "right_ctrl"},
    {"Right Option", "right_opt"},
    {"Shift + \\", "shift+\\"},
    {"F5", "f5"},
    {"F6", "f6"},
    {"F7", "f7"},
    {"F8", "f8"},
}};

/// The value is Whisper's language code.
inline constexpr std::array<Choice<std::string_view>, 23> kInputLanguageChoices = {{
    {"Auto-detect", "auto"},
    {"English", "en"},
    {"Chinese (Mandarin)", "zh"},
    {"Spanish", "es"},
    {"Hindi", "hi"},
    {"Arabic", "ar"},
    {"French", "fr"},
    {"Portuguese", "pt"},
    {"Russian", "ru"},
    {"Bengali", "bn"},
    {"Japanese", "ja"},
    {"German", "de"},
    {"Korean", "ko"},
    {"Italian", "it"},
    {"Turkish", "tr"},
    {"Vietnamese", "vi"},
    {"Polish", "pl"},
    {"Dutch", "nl"},
    {"Ukrainian", "uk"},
    {"Thai", "th"},
    {"Swedish", "sv"},
    {"Indonesian", "id"},
    {"Cantonese (v3 only)", "yue"},
}};

/// The value says whether the engine translates to English.
inline constexpr std::array<Choice<bool>, 2> kOutputChoices = {{
    {"Original language", false},
    {"Translate to English", true},
}};

}  // namespace voxtrel
