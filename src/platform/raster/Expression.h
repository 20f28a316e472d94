#pragma once
// The map algebra language: the syntax tree and its parser. Only the forms the
// system emits are accepted; anything else is an error that names its place.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace halvane::raster {

struct Expr;
using ExprPtr = std::unique_ptr<Expr>;

enum class ExprKind { kNumber, kRaster, kWord, kBinary, kCompare, kCall };

struct Expr {
    ExprKind kind;
    std::size_t position = 0;  // 1-based place of its first character in the text
    std::string text;          // number as written, raster name, word, operator or function name
    double number = 0.0;
    bool integerLiteral = false;
    std::vector<ExprPtr> operands;  // both sides of an operator, or a call's arguments
};

// Parses a whole expression. Throws Failure with a description that names the
// position and the problem. Comparisons are accepted only as the first
// argument of con, as the language has them nowhere else.
ExprPtr ParseExpression(std::string_view text);

}  // namespace halvane::raster
