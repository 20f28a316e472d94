#pragma once
// The operators of the evaluation graph. Each factory checks its arguments and
// works out the grid and cell type of its result, so that an expression fails
// when it is built, never half-way through a run.

#include <limits>
#include <string>
#include <vector>

#include "platform/raster/Engine.h"

namespace halvane::raster {

struct StoredBand {
    std::string path;
    Grid grid;
    bool integer = false;
    bool hasNoData = false;
    double noData = 0.0;
    double low = -std::numeric_limits<double>::infinity();  // the cell type's range
    double high = std::numeric_limits<double>::infinity();
    std::shared_ptr<const std::string> spatialReference;
};

enum class ResampleMethod { kNearest, kBilinear, kCubic };
enum class UnaryOp { kInt, kSqr, kSqrt };

NodePtr MakeStored(const StoredBand& band);
NodePtr MakeScalar(double value, bool integer);
NodePtr MakeUnary(UnaryOp op, NodePtr operand);
// op is one of + - * / < <= > >=
NodePtr MakeBinary(const std::string& op, NodePtr lhs, NodePtr rhs);
NodePtr MakeCon(NodePtr condition, NodePtr whenTrue, NodePtr whenFalse);
NodePtr MakeSum(std::vector<NodePtr> operands);
NodePtr MakeFocalMean(NodePtr operand, double inner, double outer);
NodePtr MakeShift(NodePtr operand, double x, double y);
NodePtr MakeResample(NodePtr operand, double cellSize, ResampleMethod method);
// Horn's slope in degrees.
NodePtr MakeSlope(NodePtr operand);

}  // namespace halvane::raster
