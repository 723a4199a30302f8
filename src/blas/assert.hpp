// QRV_ASSERT(condition): what a routine needs of its caller. Checked where QRV_CHECKED is defined, in debug and
// sanitizer builds, and nothing at all in others.
#pragma once

#ifdef QRV_CHECKED
#include <cassert>
#define QRV_ASSERT(condition) assert(condition)
#else
#define QRV_ASSERT(condition) static_cast<void>(0)
#endif
