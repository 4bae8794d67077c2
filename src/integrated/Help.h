#pragma once

#include <memory>
#include <string>

#include "machine/Automation.h"
#include "platform/Program.h"

namespace trelv::modProdTrelvInteractive {

/// The help of the forms: the manual that the medium carries. One per process, since it holds the
/// word processor that was started last.
class Help {
 public:
  explicit Help(Program& program) : program_(program) {}

  /// Shows the manual as PDF where the medium has it so, else as a Word document at the bookmark
  /// `topic` (empty: at its beginning). A word processor that was started before is told to quit
  /// first. Never raises: what is missing is told in a box, a failure is reported.
  void ShowHelp(const std::string& topic);

 private:
  void showWordManual(const std::string& document, const std::string& topic);
  void letGoOfWord();

  Program& program_;
  std::unique_ptr<machine::WordProcessor> word_;
};

/// Opens a PDF file (full path) with the registered reader and does not wait; a box where there is
/// no reader.
void ShowPdf(Program& program, const std::string& file);

/// Path of a program that is registered under its file name, without outer blanks; empty when it is
/// not.
std::string GetAppPath(Program& program, const std::string& executable);

}  // namespace trelv::modProdTrelvInteractive
