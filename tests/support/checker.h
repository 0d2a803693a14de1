// SPDX-License-Identifier: Apache-2.0
// The model checker, as the tests use it.
#ifndef KALDATA_TESTS_SUPPORT_CHECKER_H
#define KALDATA_TESTS_SUPPORT_CHECKER_H

#include "kalsupport.h"

using kalsupport::checkModel;

// For tests: EXPECT_MODEL_OK(top) prints every problem found.
#define EXPECT_MODEL_OK(root)                               \
    do {                                                    \
        for (const std::string& problem : checkModel(root)) \
            ADD_FAILURE() << problem;                       \
    } while (0)

#endif
