#pragma once

namespace voxtrel {

/// Whether the X server offers XInput 2, by whose raw events a key is seen whatever window has the
/// keyboard. Asked over a connection of its own: on Qt's, the version has been agreed already.
/// `display`: the server's name, null for the one that DISPLAY names.
/// Thread: any; waits for the server's answers.  Fails by: false.
bool offersXInput2(const char* display = nullptr);

}  // namespace voxtrel
