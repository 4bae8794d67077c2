#include <gtest/gtest.h>
#include <windows.h>
// The common controls' header needs the one above first.
#include <commctrl.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "contract/ContractMachine.h"
#include "contract/TestPictures.h"
#include "contract/win32/BoxPlayer.h"
#include "contract/win32/TestForm.h"
#include "startup/frmwait.h"
#include "win32/ControlNames.h"
#include "win32/TextSize.h"
#include "win32/Win32Desktop.h"
#include "win32/Win32Text.h"

// These tests show real dialogs: they want a screen.
namespace trelv::win32 {
namespace {

class FormHost : public testing::Test {
 protected:
  void clickOnceShown(const std::string& button) {
    form_.onLoaded = [button](machine::FormWindow& window) { clickLater(window, button); };
  }
  void show() { EXPECT_TRUE(desktop_.showModal(form_)); }

  Win32Desktop desktop_;
  TestForm form_{"frmError"};
};

using Names = std::vector<std::string>;

/// Names of the controls that a form's resource addresses, from above.
Names controlNames(Win32Desktop& desktop, const std::string& resource) {
  Names found;
  lookAt(desktop, resource, [&found](machine::FormWindow& window) {
    for (HWND const child : childrenOf(handleOf(window))) {
      const int id = GetDlgCtrlID(child);
      if (id != -1 && id != 0xFFFF) {
        found.push_back(controlName(id));
      }
    }
  });
  return found;
}

TEST_F(FormHost, EveryDialogCanBeShownAndEachControlOfItHasANameOfItsOwn) {
  EXPECT_LE(9U, dialogs().size());
  for (const std::string& dialog : dialogs()) {
    const Names found = controlNames(desktop_, dialog);
    EXPECT_EQ(0, std::count(found.begin(), found.end(), "")) << dialog;
    EXPECT_EQ(found.size(), std::set<std::string>(found.begin(), found.end()).size()) << dialog;
  }
}

TEST_F(FormHost, EveryControlOfTheErrorFormHasItsName) {
  const Names found = controlNames(desktop_, "frmError");
  EXPECT_EQ((Names{"btnOk", "cmdDettagli", "picError", "txtErrLabel", "txtProgetto", "txtModulo",
                   "txtProcedura", "txtErrSource", "txtErrCodice", "txtErrDescrizione",
                   "txtErrDescrizioneInterna", "txtErrTrace"}),
            found);
}

TEST_F(FormHost, EveryControlOfTheMaintenanceFormHasItsNameInTheOrderOfTheKeyboard) {
  const Names found = controlNames(desktop_, "frmProdTrelvMaintain");
  EXPECT_EQ((Names{"lblServerPath", "cmbProduct", "optClient", "optServer", "lblClientVersion",
                   "lblServerVersion", "lblRemove", "btnRemove", "optSetup", "optUpdate",
                   "lstVersion", "btnRepair", "lblRepair", "lblOutcome", "txtProgress",
                   "prgProgress", "lblProgress", "btnExit"}),
            found);
}

TEST_F(FormHost, ControlNamesAndIdentifiersBelongTogether) {
  EXPECT_EQ("btnOk", controlName(controlId("btnOk")));
  EXPECT_EQ("txtErrTrace", controlName(controlId("txtErrTrace")));
  EXPECT_EQ(0, controlId("btnNiente"));
  EXPECT_EQ("", controlName(IDCANCEL));
}

TEST_F(FormHost, TextsKeepTheirAccentsAndLineEnds) {
  lookAt(desktop_, "frmError", [](machine::FormWindow& window) {
    EXPECT_EQ("Segnalazione di errore", window.title());
    window.setTitle("Più titoli");
    EXPECT_EQ("Più titoli", window.title());
    window.setText("txtErrDescrizione", "Modalità\r\n€ e così via");
    EXPECT_EQ("Modalità\r\n€ e così via", window.text("txtErrDescrizione"));
    EXPECT_EQ("OK", window.text("btnOk"));
  });
}

TEST_F(FormHost, AControlThatTheFormDoesNotHaveIsAnsweredWithNothing) {
  lookAt(desktop_, "frmError", [](machine::FormWindow& window) {
    machine::ProgressNumbers numbers;
    for (const char* const name : {"btnNiente", "prgProgress"}) {
      EXPECT_FALSE(window.hasControl(name));
      window.setText(name, "x");
      window.setEnabled(name, false);
      window.setFocus(name);
      EXPECT_EQ("", window.text(name));
      EXPECT_FALSE(window.progress(name, numbers));
      EXPECT_FALSE(window.setProgress(name, numbers));
    }
    EXPECT_FALSE(window.progress("txtErrTrace", numbers)) << "a text box is no progress bar";
  });
}

TEST_F(FormHost, AClickReachesTheFormByTheControlsName) {
  clickOnceShown("cmdDettagli");
  show();
  EXPECT_EQ((Names{"clicked cmdDettagli"}), form_.events);
}

TEST_F(FormHost, EnterPressesTheDefaultButtonFromAnyBox) {
  form_.onLoaded = [](machine::FormWindow& window) {
    PostMessageW(controlOf(window, "txtModulo"), WM_KEYDOWN, VK_RETURN, 0);
  };
  show();
  EXPECT_EQ((Names{"clicked btnOk"}), form_.events);
}

TEST_F(FormHost, EscAndTheCloseBoxAskTheForm) {
  form_.onLoaded = [](machine::FormWindow& window) {
    PostMessageW(controlOf(window, "txtModulo"), WM_KEYDOWN, VK_ESCAPE, 0);
  };
  show();
  form_.onLoaded = [](machine::FormWindow& window) {
    PostMessageW(handleOf(window), WM_SYSCOMMAND, SC_CLOSE, 0);
  };
  show();
  EXPECT_EQ((Names{"close requested", "close requested"}), form_.events);
}

TEST_F(FormHost, TheKeyboardStartsAtTheFirstButtonUnlessTheFormSaysOtherwise) {
  std::string focused;
  const auto askLater = [](machine::FormWindow& window) {
    // A notification alone: a real click would move the focus.
    PostMessageW(handleOf(window), WM_COMMAND, MAKEWPARAM(controlId("cmdDettagli"), BN_CLICKED),
                 reinterpret_cast<LPARAM>(controlOf(window, "cmdDettagli")));
  };
  form_.onClicked = [&focused](machine::FormWindow& window, const std::string&) {
    focused = controlName(GetDlgCtrlID(GetFocus()));
    window.close();
  };
  form_.onLoaded = askLater;
  show();
  EXPECT_EQ("btnOk", focused);

  form_.onLoaded = [&askLater](machine::FormWindow& window) {
    window.setFocus("txtErrCodice");
    askLater(window);
  };
  show();
  EXPECT_EQ("txtErrCodice", focused);
}

TEST_F(FormHost, AClosedFormHearsNothingMore) {
  clickOnceShown("btnOk");
  form_.onClicked = [this](machine::FormWindow& window, const std::string&) {
    window.close();
    EXPECT_EQ(nullptr, desktop_.activeForm());
    SendMessageW(controlOf(window, "cmdDettagli"), BM_CLICK, 0, 0);
    SendMessageW(handleOf(window), WM_CLOSE, 0, 0);
  };
  show();
  EXPECT_EQ((Names{"clicked btnOk"}), form_.events);
}

TEST_F(FormHost, AFormThatClosesItselfWhileLoadingIsNeverShown) {
  form_.onLoaded = [](machine::FormWindow& window) { window.close(); };
  show();
  EXPECT_TRUE(form_.events.empty());
}

TEST_F(FormHost, AFormWithoutResourceIsNotShownAndNotCalled) {
  TestForm unknown("frmNiente");
  bool loaded = false;
  unknown.onLoaded = [&loaded](machine::FormWindow&) { loaded = true; };
  EXPECT_FALSE(desktop_.showModal(unknown));
  EXPECT_EQ(nullptr, desktop_.showModeless(unknown));
  EXPECT_FALSE(loaded);
  EXPECT_EQ(nullptr, desktop_.activeForm());
}

TEST_F(FormHost, ProcessingEventsLetsClicksRunDuringAHandler) {
  clickOnceShown("cmdDettagli");
  form_.onClicked = [this](machine::FormWindow& window, const std::string& control) {
    if (control == "cmdDettagli") {
      clickLater(window, "btnOk");
      desktop_.processEvents();
      form_.events.push_back("details done");
    } else {
      window.close();
    }
  };
  show();
  EXPECT_EQ((Names{"clicked cmdDettagli", "clicked btnOk", "details done"}), form_.events);
}

TEST_F(FormHost, TheFormOnTopIsTheActiveOneAndTheLowerOneIsDisabled) {
  TestForm upper("frmError");
  machine::FormWindow* lowerWindow = nullptr;
  upper.onLoaded = [&](machine::FormWindow& window) {
    EXPECT_EQ(&window, desktop_.activeForm());
    clickLater(window, "btnOk");
  };
  upper.onClicked = [&](machine::FormWindow& window, const std::string&) {
    EXPECT_FALSE(IsWindowEnabled(handleOf(*lowerWindow)));
    EXPECT_EQ(handleOf(*lowerWindow), GetWindow(handleOf(window), GW_OWNER));
    window.close();
    EXPECT_EQ(lowerWindow, desktop_.activeForm());
  };
  clickOnceShown("btnOk");
  form_.onClicked = [&](machine::FormWindow& window, const std::string&) {
    lowerWindow = &window;
    EXPECT_TRUE(desktop_.showModal(upper));
    EXPECT_TRUE(IsWindowEnabled(handleOf(window)));
    window.close();
  };
  show();
  EXPECT_EQ((Names{"clicked btnOk"}), upper.events);
}

TEST_F(FormHost, AFailureInAHandlerClosesTheFormAndReachesTheCaller) {
  clickOnceShown("btnOk");
  form_.onClicked = [](machine::FormWindow&, const std::string&) {
    throw std::runtime_error("failed in the handler");
  };
  EXPECT_THROW(desktop_.showModal(form_), std::runtime_error);
  EXPECT_EQ(nullptr, desktop_.activeForm());
}

TEST_F(FormHost, DisablingTheFocusedControlHandsTheKeyboardOn) {
  std::string focused;
  clickOnceShown("btnOk");
  form_.onClicked = [&focused](machine::FormWindow& window, const std::string&) {
    window.setFocus("btnOk");
    window.setEnabled("btnOk", false);
    EXPECT_FALSE(IsWindowEnabled(controlOf(window, "btnOk")));
    focused = controlName(GetDlgCtrlID(GetFocus()));
    window.close();
  };
  show();
  EXPECT_EQ("cmdDettagli", focused);
}

TEST_F(FormHost, ProgressNumbersAreKeptAsSetWhereTheVisibleBarCutsThem) {
  lookAt(desktop_, "frmError", [](machine::FormWindow& window) {
    HWND const bar = CreateWindowExW(
        0, PROGRESS_CLASSW, L"", WS_CHILD, 0, 0, 10, 10, handleOf(window),
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(controlId("prgProgress"))), nullptr, nullptr);
    machine::ProgressNumbers numbers{5, 5, 5};
    EXPECT_TRUE(window.progress("prgProgress", numbers));
    EXPECT_EQ(0, numbers.min);
    EXPECT_EQ(1, numbers.max) << "1 marks a fresh bar";
    EXPECT_EQ(0, numbers.value);

    EXPECT_TRUE(window.setProgress("prgProgress", {1, 2, 0}));
    EXPECT_TRUE(window.progress("prgProgress", numbers));
    EXPECT_EQ(0, numbers.value);
    EXPECT_EQ(1, SendMessageW(bar, PBM_GETPOS, 0, 0));

    EXPECT_TRUE(window.setProgress("prgProgress", {1, 100000, 70000}));
    EXPECT_EQ(70000, SendMessageW(bar, PBM_GETPOS, 0, 0));
    EXPECT_EQ(100000, SendMessageW(bar, PBM_GETRANGE, FALSE, 0));
  });
}

// --- The wait form

class WaitForm : public FormHost {
 protected:
  HWND dialog() { return handleOf(*desktop_.activeForm()); }
  HWND label() {
    const std::vector<HWND> controls = childrenOf(dialog());
    return *std::find_if(controls.begin(), controls.end(),
                         [](HWND control) { return textOf(control).size() > 2; });
  }

  frmwait wait_;
  std::unique_ptr<machine::ShownForm> shown_ = desktop_.showModeless(wait_);
};

TEST_F(WaitForm, TellsWhatItWaitsForAndCannotBeClosed) {
  EXPECT_NE(FALSE, IsWindowVisible(dialog()));
  EXPECT_EQ(0, GetWindowLongW(dialog(), GWL_STYLE) & WS_SYSMENU) << "no close box";
  EXPECT_EQ("Attendere prego: copia dei file in corso...", utf8(textOf(label())));

  PostMessageW(dialog(), WM_KEYDOWN, VK_ESCAPE, 0);
  PostMessageW(dialog(), WM_SYSCOMMAND, SC_CLOSE, 0);
  PostMessageW(dialog(), WM_CLOSE, 0, 0);
  desktop_.processEvents();
  EXPECT_NE(FALSE, IsWindowVisible(dialog()));
}

TEST_F(WaitForm, HasRoomForItsText) {
  const SIZE needed = textSize(label(), textOf(label()));
  EXPECT_LE(needed.cx, roomOf(label()).right);
  EXPECT_LE(needed.cy, roomOf(label()).bottom);
}

TEST_F(WaitForm, IsPaintedWhenItsShowingReturns) {
  EXPECT_EQ(FALSE, GetUpdateRect(dialog(), nullptr, FALSE));
  EXPECT_EQ(FALSE, GetUpdateRect(label(), nullptr, FALSE));
}

TEST_F(FormHost, AFailureInTheLoadingOfAModelessFormReachesTheCaller) {
  form_.onLoaded = [](machine::FormWindow&) { throw std::runtime_error("failed in loading"); };
  EXPECT_THROW(desktop_.showModeless(form_), std::runtime_error);
  EXPECT_EQ(nullptr, desktop_.activeForm());
}

TEST_F(FormHost, AFailureInAHandlerOfAModelessFormReachesWhoLetsMessagesRun) {
  form_.onClicked = [](machine::FormWindow&, const std::string&) {
    throw std::runtime_error("failed in the handler");
  };
  const auto shown = desktop_.showModeless(form_);
  ASSERT_NE(nullptr, shown);
  clickLater(*desktop_.activeForm(), "btnOk");
  EXPECT_THROW(desktop_.processEvents(), std::runtime_error);
  EXPECT_EQ(nullptr, desktop_.activeForm());
  desktop_.processEvents();
}

TEST_F(FormHost, AModelessFormWhoseOwnerEndsFirstIsGoneWithIt) {
  std::unique_ptr<machine::ShownForm> shown;
  frmwait wait;
  lookAt(desktop_, "frmError", [&](machine::FormWindow&) { shown = desktop_.showModeless(wait); });
  EXPECT_EQ(nullptr, desktop_.activeForm());
  EXPECT_NE(nullptr, shown);
  shown.reset();
}

// --- The hourglass

TEST_F(FormHost, TheHourglassStandsOverTextBoxesToo) {
  lookAt(desktop_, "frmError", [this](machine::FormWindow& window) {
    HWND const box = controlOf(window, "txtErrCodice");
    const auto pointerOverBox = [box] {
      SendMessageW(box, WM_SETCURSOR, reinterpret_cast<WPARAM>(box),
                   MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
      return GetCursor();
    };
    HCURSOR const usual = pointerOverBox();
    HCURSOR const hourglass = LoadCursorW(nullptr, kHourglassPointer);
    EXPECT_NE(hourglass, usual);
    desktop_.setHourglass(true);
    EXPECT_EQ(hourglass, GetCursor()) << "without a move of the mouse";
    EXPECT_EQ(hourglass, pointerOverBox());
    desktop_.setHourglass(false);
    EXPECT_NE(hourglass, GetCursor());
    EXPECT_EQ(usual, pointerOverBox());
  });
}

// --- Pictures

COLORREF pixelOf(HBITMAP bitmap, int x, int y) {
  HDC const context = CreateCompatibleDC(nullptr);
  HGDIOBJ const before = SelectObject(context, bitmap);
  const COLORREF colour = GetPixel(context, x, y);
  SelectObject(context, before);
  DeleteDC(context);
  return colour;
}

TEST_F(FormHost, APictureFillsItsControlAsFarAsItsProportionsAllow) {
  const auto side = contract::makeContractMachine();
  const std::string file = side->folder() + "\\stripes.bmp";
  side->putFile(file, contract::kStripedBitmap);
  lookAt(desktop_, contract::stage::kForm, [&](machine::FormWindow& window) {
    side->makeControls(window);
    ASSERT_TRUE(window.setPicture(contract::stage::kPicture, file));
    HWND const control = controlOf(window, contract::stage::kPicture);
    auto* const shown =
        reinterpret_cast<HBITMAP>(SendMessageW(control, STM_GETIMAGE, IMAGE_BITMAP, 0));
    BITMAP size{};
    GetObjectW(shown, sizeof(size), &size);
    EXPECT_EQ(80, size.bmWidth);
    EXPECT_EQ(40, size.bmHeight);
    // Where rows meet their colours are mixed.
    const auto isRed = [](COLORREF colour) { return GetRValue(colour) > GetBValue(colour); };
    for (const int x : {21, 40, 58}) {
      EXPECT_TRUE(isRed(pixelOf(shown, x, 1))) << x;
      EXPECT_FALSE(isRed(pixelOf(shown, x, 20))) << x;
      EXPECT_TRUE(isRed(pixelOf(shown, x, 38))) << x;
    }
    for (const int x : {0, 18, 61, 79}) {
      EXPECT_EQ(GetSysColor(COLOR_BTNFACE), pixelOf(shown, x, 20)) << x;
    }
    EXPECT_EQ(80, roomOf(control).right) << "the control keeps its size";
    EXPECT_FALSE(window.setPicture(contract::stage::kPicture, file + "x"));
    EXPECT_EQ(reinterpret_cast<LRESULT>(shown),
              SendMessageW(control, STM_GETIMAGE, IMAGE_BITMAP, 0));
    EXPECT_FALSE(window.setPicture(contract::stage::kList, file));
  });
}

TEST(FittedRectangle, TouchesTheSidesThatComeFirstAndStandsInTheMiddle) {
  const auto fitted = [](LONG width, LONG height, SIZE size) {
    const RECT place = fittedRectangle(width, height, size);
    return std::vector<LONG>{place.left, place.top, place.right, place.bottom};
  };
  EXPECT_EQ((std::vector<LONG>{20, 0, 60, 40}), fitted(100, 100, {80, 40}));
  EXPECT_EQ((std::vector<LONG>{0, 10, 80, 30}), fitted(4000, 1000, {80, 40}));
  EXPECT_EQ((std::vector<LONG>{35, 0, 45, 40}), fitted(25, 100, {80, 40}));
  EXPECT_EQ((std::vector<LONG>{0, 20, 80, 21}), fitted(100000, 1, {80, 40})) << "never nothing";
}

// --- Options

TEST_F(FormHost, CheckingAnOptionTakesTheCheckFromItsGroupWhereTheSystemDoesNot) {
  const auto side = contract::makeContractMachine();
  lookAt(desktop_, contract::stage::kForm, [&](machine::FormWindow& window) {
    side->makeControls(window);
    const char* const first = contract::stage::kFirstOption;
    const char* const second = contract::stage::kSecondOption;
    for (const char* const option : {first, second}) {
      SendMessageW(controlOf(window, option), BM_SETSTYLE, BS_RADIOBUTTON, FALSE);
    }
    window.setChecked(contract::stage::kCheckBox, true);
    window.setChecked(first, true);
    window.setChecked(second, true);
    EXPECT_FALSE(window.checked(first));
    EXPECT_TRUE(window.checked(second));
    EXPECT_TRUE(window.checked(contract::stage::kCheckBox));
    window.setChecked(second, false);
    EXPECT_FALSE(window.checked(first));
  });
}

// --- The keyboard in a drop-down list

class ComboKeys : public FormHost {
 protected:
  struct State {
    int selected;
    bool open;
    friend bool operator==(const State&, const State&) = default;
  };

  /// Presses keys in a list of three items whose form then hears of a click; gives what it is like.
  State after(UINT message, const std::vector<WPARAM>& keys) {
    State state{-2, false};
    stage_.onLoaded = [&](machine::FormWindow& window) {
      side_->makeControls(window);
      for (const char* const item : {"Agenda", "Bilanci", "Paghe"}) {
        window.addItem(kCombo, item);
      }
      window.setFocus(kCombo);
      for (const WPARAM key : keys) PostMessageW(controlOf(window, kCombo), message, key, 0);
      clickLater(window, contract::stage::kButton);
    };
    stage_.onClicked = [&](machine::FormWindow& window, const std::string&) {
      HWND const combo = controlOf(window, kCombo);
      state = {window.selected(kCombo), SendMessageW(combo, CB_GETDROPPEDSTATE, 0, 0) != FALSE};
      window.close();
    };
    EXPECT_TRUE(desktop_.showModal(stage_));
    return state;
  }

  static constexpr const char* kCombo = contract::stage::kCombo;
  std::unique_ptr<contract::ContractMachine> side_ = contract::makeContractMachine();
  TestForm stage_{contract::stage::kForm};
  const std::string changed_ = std::string("changed ") + kCombo;
  const std::string clicked_ = std::string("clicked ") + contract::stage::kButton;
};

TEST_F(ComboKeys, TheArrowsGoFromItemToItemAndTheFormHearsOfEach) {
  EXPECT_EQ((State{0, false}), after(WM_KEYDOWN, {VK_DOWN, VK_DOWN, VK_UP}));
  EXPECT_EQ((Names{changed_, changed_, changed_, clicked_}), stage_.events);
}

TEST_F(ComboKeys, ALetterGoesToTheNextItemThatBeginsWithIt) {
  EXPECT_EQ((State{2, false}), after(WM_CHAR, {'p'}));
}

TEST_F(ComboKeys, EscClosesTheOpenListAndNotTheForm) {
  EXPECT_EQ((State{-1, false}), after(WM_KEYDOWN, {VK_F4, VK_ESCAPE}));
  EXPECT_EQ(Names{clicked_}, stage_.events);
}

TEST_F(ComboKeys, EnterTakesTheItemOfTheOpenListAndPressesNoButton) {
  EXPECT_EQ((State{0, false}), after(WM_KEYDOWN, {VK_F4, VK_DOWN, VK_RETURN}));
  EXPECT_EQ((Names{changed_, clicked_}), stage_.events);
}

// --- Boxes

TEST_F(FormHost, MessageBoxShowsItsTextsAndAnswersWithTheButton) {
  using machine::BoxAnswer;
  using machine::BoxButtons;
  using machine::BoxIcon;
  const auto answer = [this](int button, BoxIcon icon, BoxButtons buttons) {
    const BoxPlayer player(button);
    return desktop_.messageBox("Titolo", "Modalità\r\n\r\nPremere Ok", icon, buttons);
  };
  EXPECT_EQ(BoxAnswer::Yes, answer(IDYES, BoxIcon::Question, BoxButtons::YesNo));
  EXPECT_EQ((Names{"Titolo", "Modalità\r\n\r\nPremere Ok"}), BoxPlayer::texts());
  EXPECT_EQ(BoxAnswer::No, answer(IDNO, BoxIcon::None, BoxButtons::YesNo));
  EXPECT_EQ(BoxAnswer::Cancel, answer(IDCANCEL, BoxIcon::Information, BoxButtons::OkCancel));
  EXPECT_EQ(BoxAnswer::Ok, answer(IDOK, BoxIcon::Exclamation, BoxButtons::OkCancel));
  EXPECT_EQ(BoxAnswer::Ok, answer(IDOK, BoxIcon::Critical, BoxButtons::Ok));
}

}  // namespace
}  // namespace trelv::win32
