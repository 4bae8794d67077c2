#include "kit/BuildPlace.h"

#include "kit/Failure.h"
#include "platform/FileSystemObject.h"

namespace trelv::kit {
namespace {

/// Does the path lead to the place, or to something in it? What cannot be looked at counts by its
/// text alone.
bool leadsInto(machine::Files& files, const std::string& path, const std::string& place) {
  if (FileSystemObject::liesAtOrIn(path, place)) {
    return true;
  }
  machine::FileIdentity wanted;
  if (files.identify(place, wanted) != system_code::kSuccess) {
    return false;
  }
  for (std::string above = path; !above.empty();
       above = FileSystemObject::parentFolderName(above)) {
    machine::FileIdentity found;
    if (files.identify(above, found) == system_code::kSuccess && found == wanted) {
      return true;
    }
  }
  return false;
}

}  // namespace

void requireApart(Workplace& workplace, const GivenPath& output,
                  const std::vector<Source>& sources) {
  machine::Files& files = workplace.machine.files;
  for (const Source& source : sources) {
    if (leadsInto(files, output.full(), source.path)) {
      throw Failure(output.given(), "sta in ciò da cui si costruisce: " + source.shown);
    }
    if (leadsInto(files, source.path, output.full())) {
      throw Failure(output.given(), "contiene ciò da cui si costruisce: " + source.shown);
    }
  }
}

}  // namespace trelv::kit
