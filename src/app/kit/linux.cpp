#include <clocale>
#include <string>
#include <vector>

#include "kit/CommandLine.h"
#include "posix/PosixFileUse.h"
#include "posix/PosixFinishedFiles.h"
#include "posix/PosixMachine.h"
#include "posix/PosixPath.h"

// The composition root of the second program on Linux.
int main(int count, char** arguments) {
  // The archive library asks for it where names are no plain letters.
  std::setlocale(LC_CTYPE, "C.UTF-8");
  trelv::posix::PosixMachine system;
  trelv::posix::PosixConsole console;
  trelv::posix::PosixGivenPaths paths;
  trelv::posix::PosixFileUse fileUse;
  trelv::posix::PosixFinishedFiles finished;
  trelv::machine::Machine machine = system.machine();
  trelv::kit::Workplace workplace{machine, console, paths, fileUse, finished};
  return trelv::kit::run(std::vector<std::string>(arguments + 1, arguments + count), workplace);
}
