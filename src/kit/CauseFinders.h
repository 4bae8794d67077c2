#pragma once

#include <optional>

#include "kit/ProductHistory.h"

/// What can stop a product, a function each: what shows that it did, or nothing. Those of a run ask
/// one side of it, the others pay no heed to it.
namespace trelv::kit::causes {

using Found = std::optional<Stop>;

// The start itself.

/// The record could not be read, and so counts as that of another server.
Found storeUnreadable(const ProductHistory& history, Side side);
Found otherServer(const ProductHistory& history, Side side);
Found suite(const ProductHistory& history, Side side);
Found standaloneProduct(const ProductHistory& history, Side side);
/// The start went on, and could record nothing for this workstation.
Found noStore(const ProductHistory& history, Side side);
/// The start ended before it came to the products, in a failure.
Found startFailed(const ProductHistory& history, Side side);

// A run of the product. Each has a line in the log.

Found lock(const ProductHistory& history, Side side);
Found noRights(const ProductHistory& history, Side side);
Found commandNotStarted(const ProductHistory& history, Side side);
Found recordNotWritable(const ProductHistory& history, Side side);
/// The pack was opened and removed, its content could not be copied.
Found packLost(const ProductHistory& history, Side side);
/// The run ended early for a reason that has no name.
Found runFailed(const ProductHistory& history, Side side);

// The runs before it.

Found runStoppedEarlier(const ProductHistory& history, Side side);
Found logCut(const ProductHistory& history, Side side);

// Packs that wait on the share.

Found packInUse(const ProductHistory& history, Side side);
Found packFailed(const ProductHistory& history, Side side);
Found packName(const ProductHistory& history, Side side);

// The catalogue.

Found catalogueGap(const ProductHistory& history, Side side);
Found notInCatalogue(const ProductHistory& history, Side side);

// The product's configuration file, beside what its run tells.

Found noConfiguration(const ProductHistory& history, Side side);
Found noVersion(const ProductHistory& history, Side side);
Found fieldCount(const ProductHistory& history, Side side);
Found commandGap(const ProductHistory& history, Side side);
Found secondCommand(const ProductHistory& history, Side side);
Found versionNotHigher(const ProductHistory& history, Side side);
/// The side has what its configuration leads to.
Found upToDate(const ProductHistory& history, Side side);

// The program that the start was asked for, where it is one of the product's.

Found programNotInConfiguration(const ProductHistory& history, Side side);
Found programMissing(const ProductHistory& history, Side side);
Found programNotStarted(const ProductHistory& history, Side side);

/// "lato Server", as steps are named.
std::string stepOf(Side side);

}  // namespace trelv::kit::causes
