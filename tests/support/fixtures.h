// SPDX-License-Identifier: Apache-2.0
// Shared test helpers: string literals as the pointer arguments the API takes,
// and a fixture that starts every test with an empty, live recorder.
#ifndef KALDATA_TESTS_SUPPORT_FIXTURES_H
#define KALDATA_TESTS_SUPPORT_FIXTURES_H

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "kalrecorder.h"

// Keeps the strings alive for the whole test so that the pointers stay valid.
class strings {
public:
    const std::string* operator()(const char* s) {
        store.emplace_back(s);
        return &store.back();
    }

private:
    std::deque<std::string> store;
};

class recorded : public ::testing::Test {
protected:
    void SetUp() override {
        kalrecorder::setNullObjects(false);
        kalrecorder::setKeepRecords(true);
        kalrecorder::clear();
    }
    void TearDown() override {
        kalrecorder::setNullObjects(false);
        kalrecorder::clear();
    }
    static std::vector<std::string> records() { return kalrecorder::lines(); }
    strings S;
};

#endif
