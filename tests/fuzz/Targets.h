#pragma once

#include <string_view>

/// What must hold of any input, one function a format. Each raises Broken where its rule does not
/// hold. Coverage-guided programs call one of them with inputs of their own making, a test all of
/// them with the inputs that are kept in corpus/.
namespace trelv::fuzz {

void checkCommandLine(std::string_view bytes);
void checkDescription(std::string_view bytes);
void checkEntryName(std::string_view bytes);
void checkGzip(std::string_view bytes);
void checkIniDocument(std::string_view bytes);
void checkMediumFiles(std::string_view bytes);
void checkRemovalCommand(std::string_view bytes);
void checkRunLog(std::string_view bytes);
void checkTar(std::string_view bytes);
void checkVersionText(std::string_view bytes);
void checkXmlStore(std::string_view bytes);

}  // namespace trelv::fuzz
