#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quillback/insertion/clipboard/ChildRun.h"
#include "quillback/loop/PathArrival.h"
#include "quillback/ports/Loop.h"

namespace voxtrel::quillback {

/// Looks for a microphone until there is one: without a sound server it waits for the socket of one, without
/// a source for the server's word. The server is asked by another process, because what its library needs
/// stays out of this one's memory.
/// Thread: the loop's.  Owns: that process, the watch of the socket.  Borrows: Loop (must outlive this).
/// Fails by: `onFound` where the server's reply is not clear, because a recording may work. A server on another
/// machine is not waited for.
class MicrophoneSearch {
 public:
  /// Each is called once at most.
  struct Reports {
    std::function<void()> onFound;                           ///< also from the constructor
    std::function<void(const std::string& text)> onMissing;  ///< what is missing, for people
  };

  MicrophoneSearch(Loop& loop, Reports reports);
  MicrophoneSearch(const MicrophoneSearch&) = delete;
  MicrophoneSearch& operator=(const MicrophoneSearch&) = delete;

 private:
  void look();
  void waitForSource();
  void start(const std::vector<std::string>& words);
  void ended(int exitStatus);
  void found();
  void tell(int exitStatus);

  Loop& loop_;
  const Reports reports_;
  bool isTold_ = false;
  bool isWaiting_ = false;   ///< the process waits for a source
  bool looksAgain_ = false;  ///< a server came while the process ran
  int retriesLeft_ = 0;
  std::unique_ptr<PathArrival> server_;
  std::unique_ptr<Loop::Timer> retryTimer_;
  std::unique_ptr<ChildRun> process_;
};

/// What that process does: it looks once or, with the id of its parent, waits until there is a source or no
/// server any more, for as long as the parent lives. Returns its exit status.
int searchMicrophone(const std::vector<std::string>& arguments);

}  // namespace voxtrel::quillback
