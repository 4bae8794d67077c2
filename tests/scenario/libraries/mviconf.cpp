// A configuration library of the host suite for tests. It answers as "mviconf.ini" beside it says
// and adds one line to "mviconf.txt" for each call:
//
//   [GetConfigPath]  path, code
//   [Codes]          PRODUCT.SECTION.KEY.ATTRIBUTE = the codes to answer, one for each call,
//                    separated by blanks; the last one stays. Without: 0 where a value is there,
//                    else -3003.
//   [Values]         PRODUCT.SECTION.KEY.ATTRIBUTE = value
#include <windows.h>

#include <map>
#include <string>
#include <vector>

namespace {

std::string besideLibrary(const std::string& name) {
  HMODULE module = nullptr;
  static const char kAnchor = 0;
  GetModuleHandleExA(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      &kAnchor, &module);
  std::string path(32768, '\0');
  path.resize(GetModuleFileNameA(module, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.find_last_of('\\') + 1) + name;
}

std::string setting(const std::string& section, const std::string& key,
                    const std::string& otherwise) {
  std::string value(4096, '\0');
  value.resize(GetPrivateProfileStringA(section.c_str(), key.c_str(), otherwise.c_str(),
                                        value.data(), static_cast<DWORD>(value.size()),
                                        besideLibrary("mviconf.ini").c_str()));
  return value;
}

void note(const std::string& line) {
  const HANDLE file =
      CreateFileA(besideLibrary("mviconf.txt").c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr,
                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  const std::string bytes = line + "\r\n";
  DWORD written = 0;
  WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
  CloseHandle(file);
}

std::vector<std::string> words(const std::string& text) {
  std::vector<std::string> result(1);
  for (const char c : text) {
    if (c == ' ') {
      result.emplace_back();
    } else {
      result.back() += c;
    }
  }
  return result;
}

/// The code for this call of an address; counts the calls.
int codeOf(const std::string& address, const std::string& otherwise) {
  static std::map<std::string, std::size_t> calls;
  const std::vector<std::string> codes = words(setting("Codes", address, otherwise));
  const std::size_t call = calls[address]++;
  return std::stoi(codes[call < codes.size() ? call : codes.size() - 1]);
}

}  // namespace

extern "C" int __stdcall GetParameter(const char* product, const char* section, const char* key,
                                      const char* attribute, const char* otherwise, int size,
                                      char* buffer) {
  const std::string address = std::string(product) + "." + section + "." + key + "." + attribute;
  const std::string value = setting("Values", address, "\t");
  const int code = codeOf(address, value == "\t" ? "-3003" : "0");
  note("GetParameter " + address + " " + otherwise + " " + std::to_string(size) + " -> " +
       std::to_string(code));
  lstrcpynA(buffer, value == "\t" ? otherwise : value.c_str(), size);
  return code;
}

extern "C" int __stdcall SetParameter(const char* product, const char* section, const char* key,
                                      const char* attribute, int type, const char* value) {
  const std::string address = std::string(product) + "." + section + "." + key + "." + attribute;
  note("SetParameter " + address + " " + std::to_string(type) + " " + value);
  WritePrivateProfileStringA("Values", address.c_str(), value,
                             besideLibrary("mviconf.ini").c_str());
  return 0;
}

extern "C" int __stdcall GetConfigPath(int kind, char* buffer) {
  note("GetConfigPath " + std::to_string(kind));
  lstrcpynA(buffer, setting("GetConfigPath", "path", "").c_str(), 1000);
  return std::stoi(setting("GetConfigPath", "code", "0"));
}
