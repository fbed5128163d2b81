// What the generated variants need: prototypes of what they call, conversions, and how they are exported.
#ifndef QXPORT_I8_VARIANTS_H
#define QXPORT_I8_VARIANTS_H

#include "i8/narrow.h"
#include "i8/own.h"

#define QXPORT_I8_API __attribute__((visibility("default")))

#endif
