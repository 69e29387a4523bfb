#import <Foundation/Foundation.h>

#include <csignal>

/// The rig's NSTask takes the status of every child that ends. macOS's takes those of its own tasks.
__attribute__((constructor)) static void leaveOthersChildrenAlone() {
  @autoreleasepool {
    [NSTask class];  // it starts to watch
    std::signal(SIGCHLD, SIG_DFL);
  }
}
