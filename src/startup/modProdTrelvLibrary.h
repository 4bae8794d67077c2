#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/Codes.h"
#include "platform/Program.h"

/// Codes of sides, operations, programs and products with their texts, the catalogue lookup, the
/// placeholders, the shared file-system object and the progress display. The code conversions raise
/// RuntimeError for what they do not know: -1 for numbers (the text stands in the source, the
/// description is empty), -99 for texts. Nothing else here raises.
namespace trelv::modProdTrelvLibrary {

/// "None", "Client", "Server", "ClientServer".
std::string ConvertClientServerToString(Side value);
/// "Setup", "Update", "Remove", "Exec".
std::string ConvertSetupUpdateToString(Operation value);

/// Program and product codes are compared exactly, no trimming or case folding.
std::int16_t ConvertProgramToNumber(const std::string& code);
std::int16_t ConvertProductToNumber(const std::string& code);
std::string ConvertNumberToProgram(std::int16_t number);
std::string ConvertNumberToProduct(std::int16_t number);
/// Product number of a program number: 12 gives 10. The number is divided by ten and rounded, a
/// half to the even neighbour. Raises the runtime's overflow above 16 bits.
std::int16_t ProgramToProduct(std::int32_t programNumber);

/// Name of the catalogue section with this index (from 1): "prod01" … "prod99", "prod100".
std::string CatalogueSection(int index);
/// Keys "conf" and "name" of the first of the 100 catalogue sections whose "id" is exactly
/// `productId`. `iniPath` is the catalogue's full path. Empty where the key or the file is missing.
std::string GetCatalogueProductConf(Program& program, const std::string& iniPath,
                                    const std::string& productId);
std::string GetCatalogueProductName(Program& program, const std::string& iniPath,
                                    const std::string& productId);

/// Resolves the placeholders of a command line or path: rewrites the text in place and returns it.
/// The three paths are inserted as they are (with or without trailing backslash, slashes kept). A
/// missing registry value is inserted as empty text.
std::string ReplacePlaceholders(Program& program, std::string& text, const std::string& setupPath,
                                const std::string& workPath, const std::string& clientPath);

/// Shows a log line on the active form, if it carries the progress controls, and advances its bar
/// by one. Called by the run log only. Ends silently on any failure. The form may be closed when
/// this returns: pending window events run.
void ShowProgress(machine::Desktop& desktop, const std::string& text);

/// Owner of the one file-system object of the process.
class SharedFileSystemObject : public FileSystemObjects {
 public:
  using Maker = std::function<std::unique_ptr<FileSystemObject>()>;
  /// `make` gives a new object or null when it cannot. Both must outlive this object.
  SharedFileSystemObject(Maker make, ErrorReporter& errors);

  /// Makes the object on first use. False, after one report per call, when it cannot be made.
  bool AllocateFSObjects();
  /// The object, which AllocateFSObjects is asked for each time; null when it cannot be made.
  FileSystemObject* fileSystemObject() override;

 private:
  Maker make_;
  ErrorReporter& errors_;
  std::unique_ptr<FileSystemObject> object_;
};

}  // namespace trelv::modProdTrelvLibrary
