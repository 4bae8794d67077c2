#include "decoder/PatientTree.h"

#include <utility>

namespace trelv::decoder {
namespace {

bool mayChange() { return false; }

}  // namespace

PatientTree::PatientTree(OutputTree& output, Patience::Pause pause)
    : output_(output), patience_(std::move(pause)) {}

std::string PatientTree::path(const std::string& name) const { return output_.path(name); }

std::size_t PatientTree::longestName() const { return output_.longestName(); }

SystemCode PatientTree::look(const std::string& name, Standing& standing) {
  return output_.look(name, standing);
}

SystemCode PatientTree::visit(const std::string& folder, const Visitor& visitor) {
  return output_.visit(folder, visitor);
}

SystemCode PatientTree::makeFolder(const std::string& name) {
  return patience_.change(
      name, [&]() -> SystemCode { return output_.makeFolder(name); }, mayChange);
}

SystemCode PatientTree::createFile(const std::string& name, std::unique_ptr<OutputFile>& file) {
  return output_.createFile(name, file);
}

SystemCode PatientTree::replaceFile(const std::string& from, const std::string& to) {
  return patience_.change(
      to, [&]() -> SystemCode { return output_.replaceFile(from, to); },
      [&]() -> bool { return isFolder(to); });
}

SystemCode PatientTree::moveFolder(const std::string& from, const std::string& to) {
  return patience_.change(
      to, [&]() -> SystemCode { return output_.moveFolder(from, to); }, mayChange);
}

SystemCode PatientTree::removeFile(const std::string& name) {
  return patience_.change(
      name, [&]() -> SystemCode { return output_.removeFile(name); },
      [&]() -> bool { return isFolder(name); });
}

SystemCode PatientTree::removeFolder(const std::string& name) {
  return patience_.change(
      name, [&]() -> SystemCode { return output_.removeFolder(name); }, mayChange);
}

bool PatientTree::isFolder(const std::string& name) {
  Standing standing = Standing::kNothing;
  return output_.look(name, standing) == system_code::kSuccess && standing == Standing::kFolder;
}

}  // namespace trelv::decoder
