#pragma once

/// The application's product name: title of message boxes and text of the version resource, which
/// the resource compiler reads from here too (hence a macro).
#define TRELV_PRODUCT_NAME "TrelvManager"
