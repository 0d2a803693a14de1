#include "expr.h"

#include <cctype>

namespace kalipxact {
namespace detail {

namespace {

// A recursive-descent parser that evaluates as it goes. Precedence, lowest
// first: ?:, ||, &&, |, ^, &, == !=, < <= > >=, << >>, + -, * / %, **, unary.
struct parser {
    const std::string& s;
    const lookupFn& lookup;
    std::size_t i = 0;
    std::string why;
    int depth = 0;

    bool fail(const std::string& w) {
        if (why.empty()) why = w;
        return false;
    }
    void blank() {
        while (i < s.size() && std::isspace(static_cast<unsigned char>(s[i])))
            ++i;
    }
    bool eat(const char* op) {
        blank();
        std::size_t n = 0;
        while (op[n])
            ++n;
        if (s.compare(i, n, op) != 0) return false;
        i += n;
        return true;
    }
    bool peek(const char* op) {
        blank();
        std::size_t n = 0;
        while (op[n])
            ++n;
        return s.compare(i, n, op) == 0;
    }

    bool ternary(std::int64_t& v) {
        if (++depth > 200) return fail("expression nested too deeply");
        if (!logicalOr(v)) return false;
        if (eat("?")) {
            std::int64_t a = 0, b = 0;
            if (!ternary(a)) return false;
            if (!eat(":")) return fail("expected ':'");
            if (!ternary(b)) return false;
            v = v ? a : b;
        }
        --depth;
        return true;
    }
    template <class Next, class Apply>
    bool binary(std::int64_t& v, Next next, const char* const* ops, Apply apply) {
        if (!(this->*next)(v)) return false;
        for (;;) {
            int which = -1;
            for (int k = 0; ops[k]; ++k) {
                // "<" must not take the first character of "<<" or "<=", and so on.
                if (peek(ops[k])) {
                    std::size_t n = 0;
                    while (ops[k][n])
                        ++n;
                    char after = i + n < s.size() ? s[i + n] : '\0';
                    char first = ops[k][0];
                    if (n == 1 && (first == '<' || first == '>') && (after == first || after == '='))
                        continue;
                    if (n == 1 && (first == '&' || first == '|') && after == first) continue;
                    if (n == 1 && first == '*' && after == '*') continue;
                    if (n == 1 && (first == '=' || first == '!') && after != '=') continue;
                    which = k;
                    i += n;
                    break;
                }
            }
            if (which < 0) return true;
            std::int64_t r = 0;
            if (!(this->*next)(r)) return false;
            if (!apply(which, v, r)) return false;
        }
    }
    bool logicalOr(std::int64_t& v) {
        static const char* const ops[] = {"||", nullptr};
        return binary(v, &parser::logicalAnd, ops, [](int, std::int64_t& a, std::int64_t b) {
            a = (a || b) ? 1 : 0;
            return true;
        });
    }
    bool logicalAnd(std::int64_t& v) {
        static const char* const ops[] = {"&&", nullptr};
        return binary(v, &parser::bitOr, ops, [](int, std::int64_t& a, std::int64_t b) {
            a = (a && b) ? 1 : 0;
            return true;
        });
    }
    bool bitOr(std::int64_t& v) {
        static const char* const ops[] = {"|", nullptr};
        return binary(v, &parser::bitXor, ops, [](int, std::int64_t& a, std::int64_t b) {
            a |= b;
            return true;
        });
    }
    bool bitXor(std::int64_t& v) {
        static const char* const ops[] = {"^", nullptr};
        return binary(v, &parser::bitAnd, ops, [](int, std::int64_t& a, std::int64_t b) {
            a ^= b;
            return true;
        });
    }
    bool bitAnd(std::int64_t& v) {
        static const char* const ops[] = {"&", nullptr};
        return binary(v, &parser::equality, ops, [](int, std::int64_t& a, std::int64_t b) {
            a &= b;
            return true;
        });
    }
    bool equality(std::int64_t& v) {
        static const char* const ops[] = {"==", "!=", nullptr};
        return binary(v, &parser::relational, ops, [](int k, std::int64_t& a, std::int64_t b) {
            a = (k == 0 ? a == b : a != b) ? 1 : 0;
            return true;
        });
    }
    bool relational(std::int64_t& v) {
        static const char* const ops[] = {"<=", ">=", "<", ">", nullptr};
        return binary(v, &parser::shift, ops, [](int k, std::int64_t& a, std::int64_t b) {
            bool r = k == 0 ? a <= b : k == 1 ? a >= b : k == 2 ? a < b : a > b;
            a = r ? 1 : 0;
            return true;
        });
    }
    bool shift(std::int64_t& v) {
        static const char* const ops[] = {"<<", ">>", nullptr};
        return binary(v, &parser::additive, ops, [this](int k, std::int64_t& a, std::int64_t b) {
            if (b < 0 || b > 63) return fail("shift by " + std::to_string(b));
            a = k == 0 ? static_cast<std::int64_t>(static_cast<std::uint64_t>(a) << b) : a >> b;
            return true;
        });
    }
    bool additive(std::int64_t& v) {
        static const char* const ops[] = {"+", "-", nullptr};
        return binary(v, &parser::multiplicative, ops, [](int k, std::int64_t& a, std::int64_t b) {
            // Wrapping arithmetic: a document cannot make the reader's own behaviour undefined.
            auto ua = static_cast<std::uint64_t>(a), ub = static_cast<std::uint64_t>(b);
            a = static_cast<std::int64_t>(k == 0 ? ua + ub : ua - ub);
            return true;
        });
    }
    bool multiplicative(std::int64_t& v) {
        static const char* const ops[] = {"*", "/", "%", nullptr};
        return binary(v, &parser::power, ops, [this](int k, std::int64_t& a, std::int64_t b) {
            if (k == 0) {
                a = static_cast<std::int64_t>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
                return true;
            }
            if (b == 0) return fail("division by zero");
            if (a == INT64_MIN && b == -1) return fail("division overflows");
            a = k == 1 ? a / b : a % b;
            return true;
        });
    }
    bool power(std::int64_t& v) {
        if (!unary(v)) return false;
        if (eat("**")) {
            std::int64_t e = 0;
            if (!power(e)) return false;  // right-associative
            if (e < 0) return fail("negative exponent");
            std::uint64_t r = 1, b = static_cast<std::uint64_t>(v);
            for (std::int64_t k = 0; k < e && k < 64; ++k)
                r *= b;
            v = static_cast<std::int64_t>(r);
        }
        return true;
    }
    bool unary(std::int64_t& v) {
        if (eat("-")) {
            if (!unary(v)) return false;
            v = static_cast<std::int64_t>(0 - static_cast<std::uint64_t>(v));
            return true;
        }
        if (eat("+")) return unary(v);
        if (peek("!") && !peek("!=")) {
            ++i;
            if (!unary(v)) return false;
            v = v ? 0 : 1;
            return true;
        }
        if (eat("~")) {
            if (!unary(v)) return false;
            v = ~v;
            return true;
        }
        return primary(v);
    }
    static int digit(char c, int base) {
        int d = std::isdigit(static_cast<unsigned char>(c)) ? c - '0'
                : (c >= 'a' && c <= 'f')                    ? c - 'a' + 10
                : (c >= 'A' && c <= 'F')                    ? c - 'A' + 10
                                                            : 99;
        return d < base ? d : -1;
    }
    bool based(std::int64_t& v) {  // at the quote of 'h1F, 'b101, 'd9, 'o7 (also 'sh...)
        ++i;
        if (i < s.size() && (s[i] == 's' || s[i] == 'S')) ++i;
        if (i >= s.size()) return fail("literal without base");
        char b = static_cast<char>(std::tolower(static_cast<unsigned char>(s[i++])));
        int base = b == 'h' ? 16 : b == 'b' ? 2 : b == 'o' ? 8 : b == 'd' ? 10 : 0;
        if (!base) return fail(std::string("unknown base '") + b + "'");
        std::uint64_t r = 0;
        bool any = false;
        while (i < s.size() && (digit(s[i], base) >= 0 || s[i] == '_')) {
            if (s[i] != '_')
                r = r * static_cast<std::uint64_t>(base) + static_cast<std::uint64_t>(digit(s[i], base));
            any = true;
            ++i;
        }
        if (!any) return fail("literal without digits");
        v = static_cast<std::int64_t>(r);
        return true;
    }
    bool primary(std::int64_t& v) {
        blank();
        if (i >= s.size()) return fail("unexpected end");
        char c = s[i];
        if (c == '(') {
            ++i;
            if (!ternary(v)) return false;
            if (!eat(")")) return fail("expected ')'");
            return true;
        }
        if (c == '\'') return based(v);
        if (std::isdigit(static_cast<unsigned char>(c))) {
            std::uint64_t r = 0;
            while (i < s.size() && (std::isdigit(static_cast<unsigned char>(s[i])) || s[i] == '_')) {
                if (s[i] != '_') r = r * 10 + static_cast<std::uint64_t>(s[i] - '0');
                ++i;
            }
            if (i < s.size() && s[i] == '\'') return based(v);  // the size of 8'hFF is not kept
            v = static_cast<std::int64_t>(r);
            return true;
        }
        if (c == '$') {
            std::size_t start = i++;
            while (i < s.size() && (std::isalnum(static_cast<unsigned char>(s[i])) || s[i] == '_'))
                ++i;
            std::string fn = s.substr(start, i - start);
            if (fn != "$clog2") return fail("unknown function " + fn);
            if (!eat("(")) return fail("expected '(' after $clog2");
            std::int64_t a = 0;
            if (!ternary(a)) return false;
            if (!eat(")")) return fail("expected ')'");
            std::int64_t r = 0;
            while (r < 64 && (std::int64_t(1) << r) < a)
                ++r;
            v = r;
            return true;
        }
        if (std::isalpha(static_cast<unsigned char>(c)) || c == '_') {
            std::size_t start = i;
            while (i < s.size() && (std::isalnum(static_cast<unsigned char>(s[i])) || s[i] == '_'))
                ++i;
            std::string name = s.substr(start, i - start);
            std::string w;
            if (!lookup || !lookup(name, v, w)) return fail(w.empty() ? "unknown name " + name : w);
            return true;
        }
        return fail(std::string("unexpected '") + c + "'");
    }
};

}  // namespace

bool evaluate(const std::string& text, const lookupFn& lookup, std::int64_t& value, std::string& why) {
    parser p{text, lookup, 0, std::string(), 0};
    std::int64_t v = 0;
    if (!p.ternary(v)) {
        why = p.why;
        return false;
    }
    p.blank();
    if (p.i != text.size()) {
        why = "unexpected '" + text.substr(p.i, 10) + "'";
        return false;
    }
    value = v;
    return true;
}

bool stringLiteral(const std::string& text, std::string& out) {
    std::size_t a = text.find_first_not_of(" \t\r\n"), b = text.find_last_not_of(" \t\r\n");
    if (a == std::string::npos || b <= a || text[a] != '"' || text[b] != '"') return false;
    if (text.find('"', a + 1) != b) return false;
    out = text.substr(a + 1, b - a - 1);
    return true;
}

}  // namespace detail
}  // namespace kalipxact
