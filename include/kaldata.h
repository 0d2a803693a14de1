// SPDX-License-Identifier: Apache-2.0
// Umbrella header of libkaldata: includes every public class header.
#ifndef KALDATA_KALDATA_H
#define KALDATA_KALDATA_H

#include "kalproject.h"
#include "kalattributes.h"
#include "kalutilities.h"
#include "kalmessages.h"
#include "kalparameter.h"
#include "kallpc.h"
#include "kalfile.h"
#include "kalport.h"
#include "kalnet.h"
#include "kaldualport.h"
#include "kalcomponent.h"
#include "kaldesign.h"
#include "kalelements.h"
#include "kalgenerators.h"
#include "kalversion.h"
#include "kalverify.h"

#endif
