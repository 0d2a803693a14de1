// SPDX-License-Identifier: Apache-2.0
#include "kalversion.h"

const char* kaldataVersion() {
    return KALDATA_VERSION_STRING;
}
