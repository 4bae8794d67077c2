#include "platform/PatientProfileFiles.h"

#include "platform/FileSystemObject.h"

namespace trelv {

PatientProfileFiles::PatientProfileFiles(machine::ProfileFiles& profiles, machine::Files& files,
                                         machine::Clock& clock)
    : profiles_(profiles),
      files_(files),
      patience_([&clock](std::uint32_t milliseconds) -> void { clock.pause(milliseconds); }) {}

std::string PatientProfileFiles::readValue(const std::string& section, const std::string& key,
                                           const std::string& defaultValue, std::uint32_t size,
                                           const std::string& file) {
  return profiles_.readValue(section, key, defaultValue, size, file);
}

std::uint32_t PatientProfileFiles::writeValue(const std::string& section, const std::string& key,
                                              const std::string& value, const std::string& file) {
  std::uint32_t written = profiles_.writeValue(section, key, value, file);
  if (written == 0 && mayBeInHand(file)) {
    patience_.change(
        file,
        [&]() -> SystemCode {
          written = profiles_.writeValue(section, key, value, file);
          return written == 0 ? system_code::kSharingViolation : system_code::kSuccess;
        },
        []() -> bool { return false; });
  }
  return written;
}

// Who may not add a file to a folder, or finds no file that could be written, is not to wait for
// one. A bare name would be looked for in the wrong folder.
bool PatientProfileFiles::mayBeInHand(const std::string& file) {
  machine::FileFacts facts;
  return file.find('\\') != std::string::npos &&
         files_.look(file, facts) == system_code::kSuccess && !facts.readOnly && !facts.folder &&
         files_.mayAddFile(FileSystemObject::parentFolderName(file)) == system_code::kSuccess;
}

}  // namespace trelv
