#pragma once

#include <linux/input-event-codes.h>

#include <array>
#include <functional>
#include <string>

namespace voxtrel {

/// The keys of an input device, one bit each, as the kernel reports them.
using KeyBits = std::array<unsigned char, KEY_MAX / 8 + 1>;

/// True for keyboards. Power buttons, headsets and mice have keys too, but not all letters.
bool hasAllLetters(const KeyBits& keys);

/// Whether the input device open at `descriptor` is a keyboard.
bool isKeyboard(int descriptor);

/// Whether this user may read a keyboard: one of the nodes `event*` in `folder` that `accepts`
/// returns true for. Closes every node at once.
/// Thread: any; never blocks.  Fails by: false.
bool canReadKeyboard(const std::string& folder = "/dev/input",
                     const std::function<bool(int descriptor)>& accepts = isKeyboard);

}  // namespace voxtrel
