#pragma once

#include <memory>
#include <string>

#include "integrated/SessionForm.h"
#include "ui/FrmInfo.h"

namespace trelv {

/// The first form of a session: how the products are to be installed. A confirmed choice stands in
/// SessionState (installationType, serverPath, confirmed), which keeps it for the next time the
/// form is shown.
class frmSelectInstall : public SessionForm {
 public:
  /// Name of the installation that needs no host, also as SessionState::installationType.
  static constexpr const char* kStandard = "Installazione Standard";

  frmSelectInstall(Program& program, modProdTrelvInteractive::Help& help);

  std::string name() const override { return "frmSelectInstall"; }
  bool keyPressed(machine::FormWindow& window, const std::string& control,
                  machine::Key key) override;

 private:
  void fill(machine::FormWindow& window) override;
  void confirm(machine::FormWindow& window) override;
  void confirmByDoubleClick(machine::FormWindow& window) override { confirm(window); }

  /// The path is empty when it is not known.
  HostInstallation installationOf(int item);
  std::string itemText(const HostInstallation& installation);
  void clearResult();
  /// Completes and tests a choice; false when it is not allowed.
  bool allow(machine::FormWindow& window, HostInstallation& installation);
  /// Empty when the user gives none.
  std::string askServerPath();
  bool isServerPath(const std::string& path);
  bool blockedByStandaloneProducts();
  void offerReport(const std::string& products);
  void showReport();

  std::unique_ptr<FrmInfo> info_;
};

}  // namespace trelv
