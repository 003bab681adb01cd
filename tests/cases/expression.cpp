#include "expression.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <vector>

namespace {

struct Value {
    double number;
    bool isDouble;
};

Value single(float value) {
    return {static_cast<double>(value), false};
}
Value wide(double value) {
    return {value, true};
}
float rounded(Value value) {
    return static_cast<float>(value.number);
}

template <class Operation>
Value combine(Value a, Value b, Operation operation) {
    if (a.isDouble || b.isDouble) return wide(operation(a.number, b.number));
    return single(operation(rounded(a), rounded(b)));
}

class Reader {
  public:
    Reader(std::string_view text, const std::map<std::string, float>& names) : text_(text), names_(names) {}

    float result() {
        const Value value = sum();
        if (peek() != 0) fail("unexpected text");
        return rounded(value);
    }

  private:
    [[noreturn]] void fail(const std::string& what) const {
        throw std::runtime_error("formula {" + std::string(text_) + "}: " + what + " at character " +
                                 std::to_string(at_ + 1));
    }

    char peek() {
        while (at_ < text_.size() && text_[at_] == ' ')
            ++at_;
        return at_ < text_.size() ? text_[at_] : '\0';
    }

    bool accept(char c) {
        if (peek() != c) return false;
        ++at_;
        return true;
    }

    Value sum() {
        Value value = product();
        for (;;) {
            if (accept('+')) {
                value = combine(value, product(), [](auto a, auto b) { return a + b; });
            } else if (accept('-')) {
                value = combine(value, product(), [](auto a, auto b) { return a - b; });
            } else {
                return value;
            }
        }
    }

    Value product() {
        Value value = factor();
        for (;;) {
            if (accept('*')) {
                value = combine(value, factor(), [](auto a, auto b) { return a * b; });
            } else if (accept('/')) {
                value = combine(value, factor(), [](auto a, auto b) { return a / b; });
            } else {
                return value;
            }
        }
    }

    Value factor() {
        if (accept('-')) {
            const Value value = factor();
            return {-value.number, value.isDouble};
        }
        if (accept('(')) {
            const Value value = sum();
            if (!accept(')')) fail("missing )");
            return value;
        }
        if (std::isalpha(static_cast<unsigned char>(peek())) != 0) return named();
        return number();
    }

    // A number with a trailing d is double.
    Value number() {
        peek();
        const std::string rest(text_.substr(at_));
        char* end = nullptr;
        const float value = std::strtof(rest.c_str(), &end);
        if (end == rest.c_str()) fail("expected a number");
        if (*end == 'd') {
            const double precise = std::strtod(rest.c_str(), nullptr);
            at_ += static_cast<std::size_t>(end - rest.c_str()) + 1;
            return wide(precise);
        }
        at_ += static_cast<std::size_t>(end - rest.c_str());
        return single(value);
    }

    Value named() {
        const std::size_t from = at_;
        while (at_ < text_.size() && (std::isalnum(static_cast<unsigned char>(text_[at_])) != 0 || text_[at_] == '_'))
            ++at_;
        const std::string name(text_.substr(from, at_ - from));
        if (accept('(')) return call(name);
        if (name == "inf") return single(INFINITY);
        if (name == "nan") return single(NAN);
        const auto found = names_.find(name);
        if (found == names_.end()) fail("unknown name " + name);
        return single(found->second);
    }

    // 1 multiplied by a and b in turn, as often as said, rounded each time.
    static float repeatedly(float a, float b, float often) {
        float product = 1.0F;
        for (int i = 0; static_cast<float>(i) < often; ++i)
            product *= i % 2 == 0 ? a : b;
        return product;
    }

    Value call(const std::string& name) {
        std::vector<Value> in;
        do
            in.push_back(sum());
        while (accept(','));
        if (!accept(')')) fail("missing )");
        if (in.size() == 1) {
            const double x = in[0].number;
            if (name == "double") return wide(x);
            if (name == "single") return single(rounded(in[0]));
            if (name == "exp") return wide(std::exp(x));
            if (name == "sin") return wide(std::sin(x));
            if (name == "cos") return wide(std::cos(x));
            if (name == "tan") return wide(std::tan(x));
            if (name == "acos") return wide(std::acos(x));
        }
        if (in.size() == 2) {
            if (name == "pow") return wide(std::pow(in[0].number, in[1].number));
            if (name == "min") return combine(in[0], in[1], [](auto a, auto b) { return std::min(a, b); });
            if (name == "max") return combine(in[0], in[1], [](auto a, auto b) { return std::max(a, b); });
        }
        if (in.size() == 3 && name == "times")
            return single(repeatedly(rounded(in[0]), rounded(in[1]), rounded(in[2])));
        fail("no function " + name + " of " + std::to_string(in.size()));
    }

    std::string_view text_;
    const std::map<std::string, float>& names_;
    std::size_t at_ = 0;
};

}  // namespace

float evaluate(std::string_view text, const std::map<std::string, float>& names) {
    return Reader(text, names).result();
}
