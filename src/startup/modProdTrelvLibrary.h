#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/Codes.h"
#include "platform/Program.h"

/// Codes of sides, operations, programs and products with their texts, the catalogue lookup, the
/// placeholders, the shared file-system object and the progress display. The code conversions raise
/// RuntimeError (-1 and -99) for unknown codes; they are the only procedures that do.
namespace trelv::modProdTrelvLibrary {

std::string ConvertClientServerToString(Side value);
std::string ConvertSetupUpdateToString(Operation value);

/// Program and product codes are compared exactly, no trimming or case folding.
std::int16_t ConvertProgramToNumber(const std::string& code);
std::int16_t ConvertProductToNumber(const std::string& code);
std::string ConvertNumberToProgram(std::int16_t number);
std::string ConvertNumberToProduct(std::int16_t number);
/// Product number of a program number: 12 gives 10.
std::int16_t ProgramToProduct(std::int32_t programNumber);

/// "prod" + index with at least two digits; index from 1.
std::string CatalogueSection(int index);
/// Keys "conf" and "name" of the first of 100 catalogue sections whose "id" is `productId`.
/// `iniPath` is the catalogue's full path.
std::string GetCatalogueProductConf(Program& program, const std::string& iniPath,
                                    const std::string& productId);
std::string GetCatalogueProductName(Program& program, const std::string& iniPath,
                                    const std::string& productId);

/// Rewrites the text in place and returns it. Paths are inserted as they are.
std::string ReplacePlaceholders(Program& program, std::string& text, const std::string& setupPath,
                                const std::string& workPath, const std::string& clientPath);

/// Shows a log line on the active form, if it carries the progress controls. Called by the run log
/// only. Ends silently on any failure.
void ShowProgress(machine::Desktop& desktop, const std::string& text);

/// Owner of the one file-system object of the process.
class SharedFileSystemObject : public FileSystemObjects {
 public:
  using Maker = std::function<std::unique_ptr<FileSystemObject>()>;
  /// `make` gives a new object or null when it cannot.
  SharedFileSystemObject(Maker make, ErrorReporter& errors);

  /// Makes the object on first use. False, after one report, when it cannot be made.
  bool AllocateFSObjects();
  FileSystemObject* fileSystemObject() override;

 private:
  Maker make_;
  ErrorReporter& errors_;
  std::unique_ptr<FileSystemObject> object_;
};

}  // namespace trelv::modProdTrelvLibrary
