#pragma once

#include <string>
#include <vector>

#include "base/Codes.h"
#include "machine/Form.h"
#include "packs/ProductRepair.h"
#include "platform/Program.h"

namespace trelv {

/// The maintenance form: removal and repair of one integrated product. One operation at a time:
/// whatever the user does while one asks or runs changes nothing, closing included.
class frmProdTrelvMaintain : public machine::Form {
 public:
  /// Shows the form modally and returns when it closes. A form that cannot be shown is told in one
  /// log line.
  static void showModal(Program& program);

  /// Reads the integration record and the catalogue of its server.
  explicit frmProdTrelvMaintain(Program& program);

  std::string name() const override { return "frmProdTrelvMaintain"; }
  void loaded(machine::FormWindow& window) override;
  void clicked(machine::FormWindow& window, const std::string& control) override;
  void selectionChanged(machine::FormWindow& window, const std::string& control) override;
  void closeRequested(machine::FormWindow& window) override;

 private:
  /// Null when nothing is selected; valid until the lists are filled anew.
  const std::string* selectedProduct(const machine::FormWindow& window) const;
  const modProdTrelvManager::RepairVersion* selectedVersion(
      const machine::FormWindow& window) const;

  std::string openingText() const;
  /// Selects the product of this identifier, if it is there.
  void fillProducts(machine::FormWindow& window, const std::string& wanted);
  /// Everything that follows the selected product; selects the version of this section, if it is
  /// there.
  void showProduct(machine::FormWindow& window, const std::string& section);
  void fillVersions(machine::FormWindow& window, const std::string& section);
  void showRecordedVersions(machine::FormWindow& window);
  void showWhatWillHappen(machine::FormWindow& window);
  std::string removalText(const machine::FormWindow& window) const;
  std::string repairText(const machine::FormWindow& window) const;
  void catchUp(machine::FormWindow& window);

  /// The server of the record, the other two as for the updates that installed the product.
  InstallationPaths paths() const;
  void remove(machine::FormWindow& window);
  void repair(machine::FormWindow& window);
  bool mayBegin(machine::FormWindow& window, const std::string& question);
  void beginOperation(machine::FormWindow& window, const std::string& outcome);
  void endOperation(machine::FormWindow& window, const std::string& outcome,
                    const std::string& button);
  void refresh(machine::FormWindow& window);

  Program& program_;
  /// Empty when no integration is recorded.
  std::string serverPath_;
  std::string clientRecord_;
  /// Identifiers in the order of the catalogue.
  std::vector<std::string> products_;
  /// Of the selected product.
  std::vector<modProdTrelvManager::RepairVersion> versions_;
  /// One of the handlers runs.
  bool busy_ = false;
  /// A choice came meanwhile.
  bool missed_ = false;
};

}  // namespace trelv
