#pragma once

/// How much of a product's configuration file is read.
namespace trelv::modProdTrelvManager {

/// Sections of one kind, "Setup01" to "Setup100".
constexpr int kMostSections = 100;
/// Commands of one side in a section, "Server01" to "Server100".
constexpr int kMostCommands = 100;

}  // namespace trelv::modProdTrelvManager
