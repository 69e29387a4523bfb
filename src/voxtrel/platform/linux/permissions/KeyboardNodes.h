#pragma once

#include <linux/input-event-codes.h>

#include <array>
#include <functional>
#include <string>

namespace voxtrel {

/// The keys that an input device has, one bit for each, as the kernel tells them.
using KeyBits = std::array<unsigned char, KEY_MAX / 8 + 1>;

/// A keyboard to type on has all letters; power buttons, headsets and mice have keys too.
bool hasAllLetters(const KeyBits& keys);

/// Whether the kernel calls the input device that is open here a keyboard.
bool isKeyboard(int descriptor);

/// Whether this user may read a keyboard: one of the nodes `event*` in `folder` that `accepts` takes
/// for one. Every node is closed again at once.
/// Thread: any; waits for no input.  Fails by: false.
bool canReadKeyboard(const std::string& folder = "/dev/input",
                     const std::function<bool(int descriptor)>& accepts = isKeyboard);

}  // namespace voxtrel
