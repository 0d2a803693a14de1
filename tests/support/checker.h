// Walks everything reachable from a root component through the public
// interface and reports every broken link, each with a readable path.
#ifndef KALDATA_TESTS_SUPPORT_CHECKER_H
#define KALDATA_TESTS_SUPPORT_CHECKER_H

#include <string>
#include <vector>

class kalcomponent;

std::vector<std::string> checkModel(kalcomponent* root);

// For tests: EXPECT_MODEL_OK(top) prints every problem found.
#define EXPECT_MODEL_OK(root)                               \
    do {                                                    \
        for (const std::string& problem : checkModel(root)) \
            ADD_FAILURE() << problem;                       \
    } while (0)

#endif
