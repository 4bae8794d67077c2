#include "kit/Verbs.h"

#include "kit/BuildMedium.h"
#include "kit/BuildPack.h"
#include "kit/Explain.h"
#include "kit/Lint.h"
#include "kit/Locks.h"
#include "kit/Plan.h"
#include "kit/Publish.h"
#include "kit/Verify.h"

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
      {"lint", "cerca errori in installazioni, supporti, pacchetti e configurazioni", make<Lint>},
      {"plan", "che cosa farebbe un avvio del gestore", make<PlanVerb>},
      {"pack", "costruisce pacchi da una descrizione", make<BuildPack>},
      {"medium", "costruisce un supporto d'installazione da una descrizione", make<BuildMedium>},
      {"publish", "pubblica pacchi sul server, li annulla, elenca le pubblicazioni", make<Publish>},
      {"verify", "confronta registrato, configurato e trovato di ogni prodotto", make<Verify>},
      {"explain", "dice che cosa ha fermato un prodotto, dal registro di un avvio", make<Explain>},
      {"locks", "mostra i blocchi di aggiornamento e chi li attende, li rimuove su richiesta",
       make<Locks>},
  };
  return table;
}

}  // namespace trelv::kit
