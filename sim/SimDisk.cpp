#include "sim/SimDisk.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>

#include "base/Text.h"

namespace trelv::sim {
namespace {

constexpr FileTicks kTicksPerSecond = 10'000'000;
// What tests put without a clock carries this time.
constexpr machine::LocalTime kDefaultTime{2009, 3, 5, 10, 0, 0};

// Days from 1 January 1601 to a date of the Gregorian calendar.
std::int64_t daysSince1601(const machine::LocalTime& time) {
  const std::int64_t year = time.month <= 2 ? time.year - 1 : time.year;
  const std::int64_t monthFromMarch = (time.month + 9) % 12;
  const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + time.day - 1;
  constexpr std::int64_t kDaysTo1601 = 584'694;  // from 1 March of year 0
  return year * 365 + year / 4 - year / 100 + year / 400 + dayOfYear - kDaysTo1601;
}

std::size_t nextLevel(std::string_view path, std::size_t from) {
  return std::min(path.find('\\', from), path.size());
}

/// They stand in `diskPath`, which has to outlive them.
std::vector<std::string_view> levelsOf(std::string_view diskPath) {
  std::vector<std::string_view> levels;
  for (std::size_t at = 0; at < diskPath.size();) {
    const std::size_t end = nextLevel(diskPath, at);
    if (end > at) {
      levels.push_back(diskPath.substr(at, end - at));
    }
    at = end + 1;
  }
  return levels;
}

bool liesUnder(std::string_view path, std::string_view folder) {
  return folder.empty() ||
         (path.size() >= folder.size() && equalNoCase(path.substr(0, folder.size()), folder) &&
          (path.size() == folder.size() || path[folder.size()] == '\\'));
}

std::uint64_t bytesIn(const SimNode& node) {
  std::uint64_t sum = node.bytes.size();
  for (const auto& child : node.children) {
    sum += bytesIn(*child);
  }
  return sum;
}

void setRightsBelow(SimNode& node, const RightsList& rights) {
  node.rights = rights;
  for (const auto& child : node.children) {
    setRightsBelow(*child, rights);
  }
}

void encryptBelow(SimNode& node, const std::string& user) {
  node.encryptedFor = user;
  for (const auto& child : node.children) {
    encryptBelow(*child, user);
  }
}

void dumpTree(const SimNode& folder, const std::string& prefix, std::string& text) {
  for (const auto& child : folder.children) {
    const std::string path = prefix + child->name;
    text += path;
    if (!child->linkTarget.empty()) {
      text += " -> " + child->linkTarget;
    } else if (child->folder) {
      text += "\\";
    } else {
      text += " " + std::to_string(child->bytes.size());
    }
    text += "\n";
    dumpTree(*child, path + "\\", text);
  }
}

std::uint32_t nextSerial() {
  // Tests run worlds side by side in threads.
  static std::atomic<std::uint32_t> last{0};
  return ++last;
}

}  // namespace

FileTicks ticksOf(const machine::LocalTime& time) {
  const std::int64_t seconds =
      ((daysSince1601(time) * 24 + time.hour) * 60 + time.minute) * 60 + time.second;
  return seconds * kTicksPerSecond;
}

SimNode* SimNode::child(std::string_view childName) const {
  for (const auto& node : children) {
    if (equalNoCase(node->name, childName)) {
      return node.get();
    }
  }
  return nullptr;
}

bool SimNode::allows(const std::string& user, Right right) const {
  const auto named = rights.find(user);
  const auto found = named != rights.end() ? named : rights.find("*");
  const Right given = found != rights.end() ? found->second : Right::None;
  return rights.empty() || (static_cast<unsigned>(given) & static_cast<unsigned>(right)) != 0;
}

bool SimNode::opensFor(const std::string& user) const {
  return folder || encryptedFor.empty() || encryptedFor == user;
}

bool SimNode::running() const {
  return std::any_of(runners.begin(), runners.end(),
                     [](const std::weak_ptr<void>& runner) { return !runner.expired(); });
}

std::shared_ptr<void> SimNode::run() {
  auto runner = std::make_shared<int>(0);
  runners.push_back(runner);
  return runner;
}

SimDisk::SimDisk() : root_(std::make_unique<SimNode>()), serial_(nextSerial()) {
  root_->folder = true;
  root_->modified = ticksOf(kDefaultTime);
}

SimDisk::~SimDisk() = default;

std::string SimDisk::pathOnDisk(const std::string& path) {
  std::string plain = path;
  std::replace(plain.begin(), plain.end(), '/', '\\');
  std::string_view rest = plain;
  if (rest.starts_with("\\\\")) {
    const std::size_t share = nextLevel(rest, 2) + 1;
    rest = share < rest.size() ? rest.substr(nextLevel(rest, share)) : std::string_view();
  } else if (rest.size() >= 2 && rest[1] == ':') {
    rest.remove_prefix(2);
  }
  std::string joined;
  for (const std::string_view level : levelsOf(rest)) {
    joined.append(joined.empty() ? "" : "\\").append(level);
  }
  return joined;
}

SimNode* SimDisk::find(const std::string& path) const {
  SimNode* node = root_.get();
  const std::string onDisk = pathOnDisk(path);
  for (const std::string_view level : levelsOf(onDisk)) {
    node = node == nullptr ? nullptr : node->child(level);
  }
  return node;
}

SimNode& SimDisk::get(const std::string& path) const {
  SimNode* node = find(path);
  if (node == nullptr) {
    throw std::out_of_range("nothing on the simulated disk: " + path);
  }
  return *node;
}

SimNode& SimDisk::addChild(SimNode& folder, const std::string& name, bool isFolder) {
  auto node = std::make_unique<SimNode>();
  node->name = name;
  node->number = ++lastNumber_;
  node->folder = isFolder;
  node->parent = &folder;
  node->modified = ticksOf(kDefaultTime);
  node->rights = folder.rights;
  node->encryptedFor = folder.encryptedFor;
  folder.children.push_back(std::move(node));
  return *folder.children.back();
}

SimNode& SimDisk::folderFor(const std::string& path) {
  SimNode* node = root_.get();
  const std::string onDisk = pathOnDisk(path);
  for (const std::string_view level : levelsOf(onDisk)) {
    SimNode* next = node->child(level);
    node = next == nullptr ? &addChild(*node, std::string(level), true) : next;
    if (!node->folder) {
      throw std::logic_error("a file stands in the way of a folder: " + path);
    }
  }
  return *node;
}

SimNode& SimDisk::fileFor(const std::string& path) {
  const std::string onDisk = pathOnDisk(path);
  const std::size_t last = onDisk.rfind('\\');
  SimNode& folder = last == std::string::npos ? *root_ : folderFor(onDisk.substr(0, last));
  const std::string name = last == std::string::npos ? onDisk : onDisk.substr(last + 1);
  SimNode* existing = folder.child(name);
  if (name.empty() || (existing != nullptr && existing->folder)) {
    throw std::logic_error("a folder stands in the place of a file: " + path);
  }
  return existing == nullptr ? addChild(folder, name, false) : *existing;
}

void SimDisk::put(const std::string& path, std::string_view bytes) {
  SimNode& file = fileFor(path);
  file.bytes = bytes;
  file.program = nullptr;
  file.version.reset();
}

void SimDisk::putProgram(const std::string& path, ProgramScript script) {
  put(path, "MZ simulated program");
  get(path).program = std::move(script);
}

void SimDisk::makeFolders(const std::string& path) { folderFor(path); }

void SimDisk::putLink(const std::string& path, const std::string& target, bool folder) {
  SimNode& link = fileFor(path);
  link.folder = folder;
  link.linkTarget = target;
}

void SimDisk::removeTree(const std::string& path) {
  const SimNode* node = find(path);
  if (node != nullptr && node->parent != nullptr) {
    std::erase_if(node->parent->children, [&](const auto& child) { return child.get() == node; });
  }
}

bool SimDisk::exists(const std::string& path) const { return find(path) != nullptr; }

bool SimDisk::fileExists(const std::string& path) const {
  const SimNode* node = find(path);
  return node != nullptr && !node->folder;
}

bool SimDisk::folderExists(const std::string& path) const {
  const SimNode* node = find(path);
  return node != nullptr && node->folder;
}

std::string SimDisk::text(const std::string& path) const {
  const SimNode& node = get(path);
  if (node.folder) {
    throw std::out_of_range("a folder has no text: " + path);
  }
  return node.bytes;
}

std::string SimDisk::tree(const std::string& path) const {
  std::string text;
  const SimNode* node = find(path);
  if (node != nullptr) {
    const std::string onDisk = pathOnDisk(path);
    dumpTree(*node, onDisk.empty() ? "" : onDisk + "\\", text);
  }
  return text;
}

std::vector<std::string> SimDisk::names(const std::string& path) const {
  std::vector<std::string> result;
  for (const auto& child : get(path).children) {
    result.push_back(child->name);
  }
  return result;
}

void SimDisk::setReadOnly(const std::string& path, bool readOnly) { get(path).readOnly = readOnly; }

bool SimDisk::isReadOnly(const std::string& path) const { return get(path).readOnly; }

void SimDisk::setConcealed(const std::string& path, bool concealed) {
  SimNode& node = get(path);
  node.hidden = concealed;
  node.system = concealed;
}

bool SimDisk::isConcealed(const std::string& path) const {
  return get(path).hidden && get(path).system;
}

void SimDisk::setModified(const std::string& path, const machine::LocalTime& time) {
  get(path).modified = ticksOf(time);
}

void SimDisk::setModifiedTicks(const std::string& path, FileTicks ticks) {
  get(path).modified = ticks;
}

FileTicks SimDisk::modifiedTicks(const std::string& path) const { return get(path).modified; }

void SimDisk::setVersion(const std::string& path, const machine::FileVersion& version) {
  get(path).version = version;
}

void SimDisk::setRights(const std::string& path, const RightsList& rights) {
  setRightsBelow(get(path), rights);
}

const RightsList& SimDisk::rights(const std::string& path) const { return get(path).rights; }

void SimDisk::encrypt(const std::string& path, const std::string& user) {
  encryptBelow(get(path), user);
}

bool SimDisk::isEncrypted(const std::string& path) const { return !get(path).encryptedFor.empty(); }

void SimDisk::putStream(const std::string& path, const std::string& stream,
                        std::string_view bytes) {
  get(path).streams[stream] = bytes;
}

bool SimDisk::hasStream(const std::string& path, const std::string& stream) const {
  return get(path).streams.count(stream) > 0;
}

void SimDisk::setListingOrder(const std::string& folder, const std::vector<std::string>& names) {
  auto& children = get(folder).children;
  const auto rank = [&](const std::unique_ptr<SimNode>& node) {
    return std::find_if(names.begin(), names.end(),
                        [&](const std::string& name) { return equalNoCase(name, node->name); }) -
           names.begin();
  };
  std::stable_sort(children.begin(), children.end(),
                   [&](const auto& left, const auto& right) { return rank(left) < rank(right); });
}

void SimDisk::holdOpen(const std::string& path, Sharing sharing) { get(path).held = sharing; }

void SimDisk::release(const std::string& path) {
  SimNode& node = get(path);
  node.held.reset();
  if (node.leaving) {
    removeTree(path);
  }
}

std::shared_ptr<void> SimDisk::run(const std::string& path) { return get(path).run(); }

void SimDisk::denyWriting(const std::string& path, SystemCode code) {
  denials_.push_back({pathOnDisk(path), true, code});
}

void SimDisk::deny(const std::string& path, SystemCode code) {
  denials_.push_back({pathOnDisk(path), false, code});
}

void SimDisk::allow(const std::string& path) {
  const std::string onDisk = pathOnDisk(path);
  std::erase_if(denials_, [&](const Denial& denial) { return equalNoCase(denial.path, onDisk); });
}

std::uint64_t SimDisk::usedBytes() const { return bytesIn(*root_); }

SystemCode SimDisk::denied(const std::string& path, bool writing) const {
  for (const Denial& denial : denials_) {
    if ((writing || !denial.onlyWriting) && liesUnder(path, denial.path)) {
      return denial.code;
    }
  }
  return system_code::kSuccess;
}

bool SimDisk::hasRoom(std::uint64_t added, std::uint64_t freed) const {
  return !capacity_ || usedBytes() + added <= *capacity_ + freed;
}

}  // namespace trelv::sim
