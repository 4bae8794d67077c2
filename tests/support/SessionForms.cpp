#include "support/SessionForms.h"

namespace trelv::tests {

void declareSessionForms(sim::SimDesktop& desktop) {
  const std::vector<std::string> bars{"prgProgress"};
  desktop.declareForm("frmSelectInstall", {{"picSetup", "ListAmb", "cmdExec", "cmdExit", "cmdhelp",
                                            "txtProgress", "lblProgress"},
                                           bars});
  desktop.declareForm("frmProdTrelvStandalone", {{"picProduct", "cmdExec", "cmdback", "cmdExit",
                                                  "cmdhelp", "txtProgress", "lblProgress"},
                                                 bars,
                                                 {},
                                                 {"ListProd"},
                                                 {"labTab"}});
  desktop.declareForm("frmProdTrelvIntegrated", {{"picProduct", "cmdExec", "cmdback", "cmdExit",
                                                  "cmdhelp", "txtProgress", "lblProgress"},
                                                 bars,
                                                 {},
                                                 {"ListProd"}});
  desktop.declareForm("frmProdTrelvSinglePack", {{"lblHeading", "picProduct", "cmdExec", "cmdExit",
                                                  "txtProgress", "lblProgress"},
                                                 bars,
                                                 {},
                                                 {"ListProd"}});
  desktop.declareForm("FrmInfo", {{"lblinfo_0", "lblinfo_1", "lblinfo_2", "Command1"}, {}});
}

}  // namespace trelv::tests
