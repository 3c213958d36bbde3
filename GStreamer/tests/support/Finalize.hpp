#pragma once

#include <glib-object.h>

namespace ElementTest {

/// The element's finalize deliberately does not call its parents': what those own stays behind. From now on
/// theirs follow, so that leak checks see only what nobody wanted.
void CompleteFinalize();

/// What the element registered as its finalize.
using Finalize = void (*)(GObject*);
Finalize ElementsOwnFinalize();

}  // namespace ElementTest
