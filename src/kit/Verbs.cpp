#include "kit/Verbs.h"

#include "kit/Publish.h"

namespace trelv::kit {
namespace {

/// What a row's last field is, for a verb's class.
template <class Kind>
std::unique_ptr<Verb> make() {
  return std::make_unique<Kind>();
}

}  // namespace

const std::vector<VerbRow>& verbs() {
  static const std::vector<VerbRow> table{
      {"publish", "pubblica pacchi sul server, li annulla, elenca le pubblicazioni", make<Publish>},
  };
  return table;
}

}  // namespace trelv::kit
