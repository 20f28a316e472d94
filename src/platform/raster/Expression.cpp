#include "platform/raster/Expression.h"

#include <cctype>
#include <charconv>

#include "platform/raster/Engine.h"

namespace halvane::raster {
namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsWordChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    ExprPtr Parse() {
        ExprPtr expr = ParseExpr(false);
        SkipBlanks();
        if (pos_ < text_.size()) Fail("unexpected '" + std::string(1, text_[pos_]) + "'");
        return expr;
    }

private:
    [[noreturn]] void Fail(const std::string& problem) const {
        std::string where =
            pos_ < text_.size() ? "at position " + std::to_string(pos_ + 1) : "at the end";
        throw EngineFailure("Map algebra: syntax error " + where + " of '" + std::string(text_) +
                            "': " + problem);
    }

    void SkipBlanks() {
        while (pos_ < text_.size() && (text_[pos_] == ' ' || text_[pos_] == '\t')) ++pos_;
    }

    bool Accept(std::string_view token) {
        SkipBlanks();
        if (text_.substr(pos_, token.size()) != token) return false;
        pos_ += token.size();
        return true;
    }

    void Expect(char c) {
        if (!Accept(std::string_view(&c, 1))) {
            Fail(std::string("expected '") + c + "' but found " + Found());
        }
    }

    std::string Found() const {
        if (pos_ >= text_.size()) return "the end of the expression";
        return "'" + std::string(1, text_[pos_]) + "'";
    }

    ExprPtr Node(ExprKind kind, std::size_t position, std::string text) {
        auto expr = std::make_unique<Expr>();
        expr->kind = kind;
        expr->position = position + 1;
        expr->text = std::move(text);
        return expr;
    }

    ExprPtr Operator(ExprKind kind, std::size_t position, std::string op, ExprPtr lhs,
                     ExprPtr rhs) {
        ExprPtr expr = Node(kind, position, std::move(op));
        expr->operands.push_back(std::move(lhs));
        expr->operands.push_back(std::move(rhs));
        return expr;
    }

    // A comparison binds loosest, and only where con takes its condition.
    ExprPtr ParseExpr(bool conditionAllowed) {
        ExprPtr lhs = ParseAdditive();
        SkipBlanks();
        const std::size_t at = pos_;
        for (std::string_view op : {"<=", ">=", "<", ">"}) {
            if (Accept(op)) {
                if (!conditionAllowed) {
                    pos_ = at;
                    Fail("a comparison is allowed only as the first argument of con");
                }
                return Operator(ExprKind::kCompare, at, std::string(op), std::move(lhs),
                                ParseAdditive());
            }
        }
        return lhs;
    }

    // Left-associative operators of one precedence over operands parsed by next.
    ExprPtr ParseChain(std::string_view operators, ExprPtr (Parser::*next)()) {
        ExprPtr lhs = (this->*next)();
        for (;;) {
            SkipBlanks();
            const std::size_t at = pos_;
            if (pos_ >= text_.size() || operators.find(text_[pos_]) == std::string_view::npos) {
                return lhs;
            }
            const char op = text_[pos_++];
            lhs = Operator(ExprKind::kBinary, at, std::string(1, op), std::move(lhs),
                           (this->*next)());
        }
    }

    ExprPtr ParseAdditive() { return ParseChain("+-", &Parser::ParseTerm); }
    ExprPtr ParseTerm() { return ParseChain("*/", &Parser::ParsePrimary); }

    ExprPtr ParsePrimary() {
        // Each level of brackets or calls is a level of this recursion: a
        // limit keeps a pathological text from overflowing the stack.
        if (++depth_ > kMaxNesting)
            Fail("nested deeper than " + std::to_string(kMaxNesting) + " levels");
        struct Leave {
            int& depth;
            ~Leave() { --depth; }
        } leave{depth_};
        SkipBlanks();
        if (pos_ >= text_.size()) Fail("expected a value but found the end of the expression");
        const std::size_t at = pos_;
        const char c = text_[pos_];
        if (c == '(') {
            ++pos_;
            ExprPtr inner = ParseExpr(false);
            Expect(')');
            return inner;
        }
        if (c == '[') return ParseRaster();
        // A minus sign glued to a number is part of it: "- -3.25" subtracts -3.25.
        if (IsDigit(c) || c == '.' ||
            (c == '-' && pos_ + 1 < text_.size() &&
             (IsDigit(text_[pos_ + 1]) || text_[pos_ + 1] == '.'))) {
            return ParseNumber();
        }
        if (IsWordChar(c)) {
            std::size_t end = pos_;
            while (end < text_.size() && IsWordChar(text_[end])) ++end;
            std::string word(text_.substr(pos_, end - pos_));
            pos_ = end;
            SkipBlanks();
            if (pos_ < text_.size() && text_[pos_] == '(') return ParseCall(at, std::move(word));
            return Node(ExprKind::kWord, at, std::move(word));
        }
        Fail("expected a value but found " + Found());
    }

    ExprPtr ParseRaster() {
        const std::size_t at = pos_++;
        const std::size_t close = text_.find(']', pos_);
        if (close == std::string_view::npos) Fail("a raster name is not closed by ']'");
        std::string name(text_.substr(pos_, close - pos_));
        if (name.empty()) Fail("empty raster name");
        pos_ = close + 1;
        return Node(ExprKind::kRaster, at, std::move(name));
    }

    ExprPtr ParseNumber() {
        const std::size_t at = pos_;
        std::size_t end = pos_;
        if (text_[end] == '-') ++end;
        bool integer = true;
        bool digits = false;
        while (end < text_.size() && IsDigit(text_[end])) ++end, digits = true;
        if (end < text_.size() && text_[end] == '.') {
            integer = false;
            ++end;
            while (end < text_.size() && IsDigit(text_[end])) ++end, digits = true;
        }
        if (!digits) Fail("malformed number");
        if (end < text_.size() && (text_[end] == 'E' || text_[end] == 'e')) {
            integer = false;
            ++end;
            if (end < text_.size() && (text_[end] == '+' || text_[end] == '-')) ++end;
            const std::size_t exponent = end;
            while (end < text_.size() && IsDigit(text_[end])) ++end;
            if (end == exponent) Fail("malformed number");
        }
        if (end < text_.size() && (IsWordChar(text_[end]) || text_[end] == '.')) {
            pos_ = end;
            Fail("malformed number");
        }
        std::string written(text_.substr(at, end - at));
        double value = 0.0;
        // from_chars rejects a leading '.', so parse with a zero in front of it.
        std::string canonical = written;
        const std::size_t dot = canonical.find('.');
        if (dot == 0 || (dot == 1 && canonical[0] == '-')) canonical.insert(dot, "0");
        const auto result =
            std::from_chars(canonical.data(), canonical.data() + canonical.size(), value);
        if (result.ec != std::errc() || result.ptr != canonical.data() + canonical.size()) {
            Fail("number out of range");
        }
        if (integer && (value < -2147483648.0 || value > 2147483647.0)) {
            Fail("integer out of range");
        }
        pos_ = end;
        ExprPtr expr = Node(ExprKind::kNumber, at, std::move(written));
        expr->number = value;
        expr->integerLiteral = integer;
        return expr;
    }

    ExprPtr ParseCall(std::size_t at, std::string name) {
        ExprPtr call = Node(ExprKind::kCall, at, std::move(name));
        Expect('(');
        const bool isCon = EqualsNoCase(call->text, "con");
        do {
            call->operands.push_back(ParseExpr(isCon && call->operands.empty()));
        } while (Accept(","));
        Expect(')');
        return call;
    }

    std::string_view text_;
    std::size_t pos_ = 0;
    int depth_ = 0;
    static constexpr int kMaxNesting = 200;
};

}  // namespace

ExprPtr ParseExpression(std::string_view text) { return Parser(text).Parse(); }

}  // namespace halvane::raster
