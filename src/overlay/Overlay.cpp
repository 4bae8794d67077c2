#include "overlay/Overlay.h"

namespace trelv::overlay {

Overlay::Overlay(const machine::Machine& below, const Settings& settings)
    : privateFolder_(below.files, below.system, below.processes, settings.privateParent),
      clock_(below.clock),
      system_(below.system, settings.process),
      tree_(below.files, clock_, below.locale, privateFolder_, settings.order),
      files_(tree_, steps_),
      profiles_(below.profiles, below.files, below.system, below.locale, tree_, privateFolder_,
                steps_),
      registry_(below.registry, below.locale, steps_),
      environment_(below.environment, below.locale, steps_),
      search_(files_, system_, environment_),
      processes_(below.processes, below.files, tree_, privateFolder_, search_, steps_,
                 settings.findUnpacking, settings.fails),
      versions_(below.versions, tree_),
      store_(below.configuration, below.locale, steps_),
      support_(below.support, settings.process.asUser),
      desktop_(steps_, settings.formUser),
      automation_(registry_, steps_),
      exclusion_(tree_, clock_),
      machine_{files_,   profiles_, registry_,    processes_, environment_,
               system_,  clock_,    below.locale, versions_,  store_,
               support_, desktop_,  automation_,  exclusion_} {
  // The program must not come upon it.
  tree_.remove(tree_.find(privateFolder_.path()));
}

}  // namespace trelv::overlay
