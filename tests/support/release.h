// SPDX-License-Identifier: Apache-2.0
// Tearing down a component tree in tests (kalsupport::release).
#ifndef KALDATA_TESTS_SUPPORT_RELEASE_H
#define KALDATA_TESTS_SUPPORT_RELEASE_H

#include "kalsupport.h"

using kalsupport::release;
using kalsupport::releaseLeftovers;

#endif
