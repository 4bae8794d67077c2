#include "decoder/Decoder.h"

#include <cstdint>
#include <memory>
#include <new>

#include "decoder/Extraction.h"
#include "decoder/PatientTree.h"
#include "decoder/Refusal.h"

namespace trelv::decoder {
namespace {

constexpr const char* kUsage = "Uso: qalbunex PACCO CARTELLA";

/// "C:\T\" in quotes reaches a program as C:\T" because the backslash takes the quote's meaning;
/// and a drive whose backslash was cut off is its root, not the drive's current folder.
std::string outputFolder(std::string argument) {
  if (!argument.empty() && argument.back() == '"') {
    argument.back() = '\\';
  }
  const bool drive = argument.size() == 2 && argument[1] == ':';
  return drive ? argument + "\\" : argument;
}

void extract(const std::string& packPath, const std::string& folder, DecoderMachine& machine) {
  const Patience::Pause pause = [&machine](std::uint32_t milliseconds) -> void {
    machine.pause(milliseconds);
  };
  std::unique_ptr<PackInput> pack;
  // A pack that was just copied may be in a scanner's hands. A refused right keeps nobody waiting.
  require(Patience(pause).change(
              packPath, [&]() -> SystemCode { return machine.openPack(packPath, pack); },
              []() -> bool { return true; }),
          packPath);
  std::unique_ptr<OutputTree> output;
  require(machine.openOutput(folder, output), folder);
  PatientTree patient(*output, pause);
  extractPack(*pack, patient);
}

DecoderResult failed(const std::string& packPath, const std::string& reason) {
  return {exit_code::kFailed, "qalbunex: " + packPath + ": " + reason};
}

}  // namespace

DecoderResult decode(const std::vector<std::string>& arguments, DecoderMachine& machine) {
  if (arguments.size() != 2 || arguments[0].empty() || arguments[1].empty()) {
    return {exit_code::kCommandLine, kUsage};
  }
  try {
    extract(arguments[0], outputFolder(arguments[1]), machine);
  } catch (const RuntimeError& failure) {
    return failed(arguments[0], failure.description());
  } catch (const std::bad_alloc&) {
    return failed(arguments[0], "Memoria insufficiente");
  }
  return {};
}

}  // namespace trelv::decoder
