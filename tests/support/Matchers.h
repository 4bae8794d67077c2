#pragma once

#include <gmock/gmock.h>

#include <cstdint>
#include <ostream>
#include <string>

#include "sim/SimDesktop.h"
#include "support/FakeProgram.h"

// How failed matchers show them.

namespace trelv {
inline void PrintTo(const RuntimeError& failure, std::ostream* out) {
  *out << failure.number() << " \"" << failure.description() << "\"";
}
}  // namespace trelv

namespace trelv::sim {
inline void PrintTo(const SimBox& box, std::ostream* out) {
  *out << box.title << ": " << box.text << " (icon " << static_cast<int>(box.icon) << ", buttons "
       << static_cast<int>(box.buttons) << ")";
}
}  // namespace trelv::sim

namespace trelv::tests {

// What tests name without its namespace.
using machine::BoxButtons;
using machine::BoxIcon;
using testing::AllOf;
using testing::Contains;
using testing::ContainsRegex;
using testing::Each;
using testing::ElementsAre;
using testing::Eq;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using testing::Pair;
using testing::SizeIs;
using testing::StartsWith;
using testing::UnorderedElementsAre;

inline void PrintTo(const FakeReport& report, std::ostream* out) {
  *out << report.module << "." << report.procedure << ": " << report.message;
}

/// A message box with this icon and this whole text; its title is the product's name and its only
/// button Ok unless others are given.
inline testing::Matcher<const sim::SimBox&> isBox(
    machine::BoxIcon icon, const std::string& text,
    machine::BoxButtons buttons = machine::BoxButtons::Ok,
    const std::string& title = "TrelvManager") {
  return testing::AllOf(testing::Field("icon", &sim::SimBox::icon, icon),
                        testing::Field("text", &sim::SimBox::text, text),
                        testing::Field("buttons", &sim::SimBox::buttons, buttons),
                        testing::Field("title", &sim::SimBox::title, title));
}

/// A failure of this number, its description aside.
inline testing::Matcher<const RuntimeError&> isFailure(
    const testing::Matcher<std::int32_t>& number) {
  return testing::Property("number", &RuntimeError::number, number);
}

/// The report of this procedure, of a program error unless another kind is given: its message, the
/// number of its failure.
inline testing::Matcher<const FakeReport&> isReport(
    const std::string& procedure, const testing::Matcher<const std::string&>& message,
    const testing::Matcher<std::int32_t>& number, const std::string& module = "ModProdTrelvManager",
    ReportKind kind = ReportKind::ProgramError) {
  return testing::AllOf(testing::Field("procedure", &FakeReport::procedure, procedure),
                        testing::Field("message", &FakeReport::message, message),
                        testing::Field("failure", &FakeReport::failure, isFailure(number)),
                        testing::Field("module", &FakeReport::module, module),
                        testing::Field("kind", &FakeReport::kind, kind));
}

}  // namespace trelv::tests
