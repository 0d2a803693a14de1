// The constant expressions of IP-XACT documents.
#include <gtest/gtest.h>

#include <map>

#include "expr.h"

namespace {

using kalipxact::detail::evaluate;

std::int64_t eval(const std::string& text) {
    std::map<std::string, std::int64_t> names = {{"W", 8}, {"uuid_1a", 3}};
    std::int64_t v = 0;
    std::string why;
    auto lookup = [&](const std::string& n, std::int64_t& out, std::string& w) {
        auto it = names.find(n);
        if (it == names.end()) {
            w = "unknown parameter " + n;
            return false;
        }
        out = it->second;
        return true;
    };
    EXPECT_TRUE(evaluate(text, lookup, v, why)) << text << ": " << why;
    return v;
}

std::string error(const std::string& text) {
    std::int64_t v = 0;
    std::string why;
    EXPECT_FALSE(evaluate(text, nullptr, v, why)) << text;
    return why;
}

TEST(expressions, literalsOperatorsAndPrecedence) {
    EXPECT_EQ(eval("'h0F00"), 3840);
    EXPECT_EQ(eval("8'hFF + 4'b1010 + 'o17 + 'd9"), 255 + 10 + 15 + 9);
    EXPECT_EQ(eval("1_000"), 1000);
    EXPECT_EQ(eval("2 + 3 * 4"), 14);
    EXPECT_EQ(eval("(2 + 3) * 4"), 20);
    EXPECT_EQ(eval("2 ** 3 ** 2"), 512);  // right-associative
    EXPECT_EQ(eval("-2 ** 2"), 4);
    EXPECT_EQ(eval("17 / 5 * 5 + 17 % 5"), 17);
    EXPECT_EQ(eval("1 << 4 >> 2"), 4);
    EXPECT_EQ(eval("3 < 4 && 4 <= 4 && 5 > 4 && 4 >= 5 == 0"), 1);
    EXPECT_EQ(eval("2 != 3 ? 10 : 20"), 10);
    EXPECT_EQ(eval("0 ? 1 : 0 ? 2 : 3"), 3);
    EXPECT_EQ(eval("!0 + ~0 + (6 & 3) + (6 | 1) + (6 ^ 3) + (0 || 2)"), 1 - 1 + 2 + 7 + 5 + 1);
}

TEST(expressions, namesAndClog2) {
    EXPECT_EQ(eval("W*2-1"), 15);
    EXPECT_EQ(eval("uuid_1a * W"), 24);
    EXPECT_EQ(eval("$clog2(W)"), 3);
    EXPECT_EQ(eval("$clog2(9)"), 4);
    EXPECT_EQ(eval("$clog2(1)"), 0);
}

TEST(expressions, failuresSayWhy) {
    EXPECT_EQ(error("1 / 0"), "division by zero");
    EXPECT_EQ(error("(1 + 2"), "expected ')'");
    EXPECT_EQ(error("W"), "unknown name W");
    EXPECT_EQ(error("$max(1)"), "unknown function $max");
    EXPECT_EQ(error("1 2"), "unexpected '2'");
    EXPECT_EQ(error("'q12"), "unknown base 'q'");
    EXPECT_EQ(error(""), "unexpected end");
    EXPECT_EQ(error("1 << 99"), "shift by 99");
}

}  // namespace
