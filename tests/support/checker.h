// SPDX-License-Identifier: Apache-2.0
// The model checker, as the tests use it.
#ifndef KALDATA_TESTS_SUPPORT_CHECKER_H
#define KALDATA_TESTS_SUPPORT_CHECKER_H

#include "kalsupport.h"
#include "kalverify.h"

using kalsupport::checkModel;

// For tests: EXPECT_MODEL_OK(top) prints every problem found, by the
// public-interface checker and by the library's check of its hidden state.
#define EXPECT_MODEL_OK(root)                                     \
    do {                                                          \
        for (const std::string& problem : checkModel(root))       \
            ADD_FAILURE() << problem;                             \
        for (const std::string& problem : kalverify::model(root)) \
            ADD_FAILURE() << "hidden state: " << problem;         \
    } while (0)

#endif
