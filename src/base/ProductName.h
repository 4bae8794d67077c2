#pragma once

/// What the program calls itself in the titles of its boxes and in its version resource. The
/// resource compiler reads it from here too, hence a macro.
#define TRELV_PRODUCT_NAME "TrelvManager"
