#pragma once

class QString;

namespace voxtrel {

/// Brings the application's visible windows forward, as far as the desktop allows.
/// `activationToken`: the desktop's permission to do so, or empty.
/// Thread: the main thread.
void bringForward(const QString& activationToken);

}  // namespace voxtrel
