#pragma once

namespace scripted {

inline constexpr const char* kHelp = R"(Usage:
  scripted-engine run [--COMMAND [ARGUMENT]]...
  scripted-engine setup --model large-v3 [--COMMAND [ARGUMENT]]...
  scripted-engine check
  scripted-engine tell ENGINE COMMAND [ARGUMENT]
An engine that does what a test tells it to. It does its commands in order and then waits.

Where the commands come from (ENGINE is the path that it was started by, PREFIX is ENGINE for run
and ENGINE.setup or ENGINE.check for the others; without ENGINE.check.script, check is unknown):
  the command line   then no file is looked at
  PREFIX.script      else: one command a line, "#" starts a comment. Without that file, run does
                     nothing and setup plays a download that succeeds
  PREFIX.control     and: a local stream socket, open from before the first command. Each line is a
                     command, done at once, also while the script runs. The reply is "ok PID"
                     when it has been done, "error TEXT", or the end of the stream when the command
                     ended the engine. "tell" sends one command there
  PREFIX.log         if the file exists, each start, exit, signal and grandchild adds a line
                     "SECONDS PID TEXT" in monotonic time

Printing (TEXT may hold \n \r \t \0 \\ \xHH; sizes may end in k, M, G):
  print TEXT             TEXT and a newline, in one write
  write TEXT             TEXT alone
  error TEXT             TEXT and a newline to standard error
  repeat TIMES TEXT      print, TIMES times
  flood BYTES [LINE]     BYTES of lines at full speed, the last byte a newline
  long-line BYTES        BYTES without a newline
  split BYTES MS         from now on BYTES a write with MS between two; 0 0: all at once
  progress MB TOTAL      a progress line of the download, ended by a carriage return
  report                 pid, parent, arguments, directory, stdin, descriptors, and blocked, ignored
                         and caught signals as they were when the engine started
  close-output           closes both streams

Ending:
  exit CODE              exits
  signal NAME            dies by that signal ("SEGV" or "11")
  ignore-term            ignores SIGTERM
  ignore NAME            ignores that signal
  on-term CODE [MS [TEXT]]  on SIGTERM prints TEXT, waits MS, exits with CODE
  wait                   does nothing more

Other:
  sleep MS               waits MS
  wait-for FILE          waits until FILE exists
  grandchild MS          leaves a process that keeps the output open, MS at most
  flooding-grandchild MS leaves a process that writes to the output without pause, MS at most
  log TEXT               adds a line to PREFIX.log, making it if need be
  log-report             adds the report to PREFIX.log
  weights MODEL          makes the mark in HOME by which the weights of MODEL count as present
)";

}  // namespace scripted
