#include "platform/raster/MapAlgebra.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

#include "platform/raster/Expression.h"
#include "platform/raster/Operators.h"

namespace halvane::raster {
namespace {

std::string FormatNumber(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

class Builder {
public:
    Builder(const std::string& text, const std::function<NodePtr(const std::string&)>& lookup)
        : text_(text), lookup_(lookup) {}

    NodePtr Build(const Expr& e) {
        switch (e.kind) {
            case ExprKind::kNumber:
                return MakeScalar(e.number, e.integerLiteral);
            case ExprKind::kRaster:
                return lookup_(e.text);
            case ExprKind::kWord:
                Fail(e, "unexpected word '" + e.text + "'");
            case ExprKind::kBinary:
            case ExprKind::kCompare:
                return MakeBinary(e.text, Build(*e.operands[0]), Build(*e.operands[1]));
            case ExprKind::kCall:
                return Call(e);
        }
        Fail(e, "unknown expression");
    }

private:
    [[noreturn]] void Fail(const Expr& e, const std::string& problem) const {
        throw EngineFailure("Map algebra: " + problem + " at position " +
                            std::to_string(e.position) + " of '" + text_ + "'");
    }

    void Arity(const Expr& call, std::size_t count) const {
        if (call.operands.size() != count) {
            Fail(call, call.text + " takes " + std::to_string(count) + " argument" +
                           (count == 1 ? "" : "s") + ", not " +
                           std::to_string(call.operands.size()));
        }
    }

    double Number(const Expr& call, std::size_t index) const {
        const Expr& arg = *call.operands[index];
        if (arg.kind != ExprKind::kNumber) {
            Fail(arg, call.text + " takes a number as argument " + std::to_string(index + 1));
        }
        return arg.number;
    }

    const std::string& Word(const Expr& call, std::size_t index) const {
        const Expr& arg = *call.operands[index];
        if (arg.kind != ExprKind::kWord) {
            Fail(arg, call.text + " takes a keyword as argument " + std::to_string(index + 1));
        }
        return arg.text;
    }

    NodePtr Call(const Expr& call) {
        const std::string& f = call.text;
        auto is = [&](const char* name) { return EqualsNoCase(f, name); };
        if (is("int") || is("Sqr") || is("Sqrt")) {
            Arity(call, 1);
            const UnaryOp op = is("int")   ? UnaryOp::kInt
                               : is("Sqr") ? UnaryOp::kSqr
                                           : UnaryOp::kSqrt;
            return MakeUnary(op, Build(*call.operands[0]));
        }
        if (is("con")) {
            Arity(call, 3);
            return MakeCon(Build(*call.operands[0]), Build(*call.operands[1]),
                           Build(*call.operands[2]));
        }
        if (is("Sum")) {
            std::vector<NodePtr> operands;
            for (const ExprPtr& operand : call.operands) operands.push_back(Build(*operand));
            return MakeSum(std::move(operands));
        }
        if (is("Focalmean")) {
            Arity(call, 4);
            if (!EqualsNoCase(Word(call, 1), "annulus")) {
                Fail(*call.operands[1], "Focalmean knows only the neighbourhood 'annulus', not '" +
                                            call.operands[1]->text + "'");
            }
            return MakeFocalMean(Build(*call.operands[0]), Number(call, 2), Number(call, 3));
        }
        if (is("Resample")) {
            Arity(call, 3);
            const std::string& method = Word(call, 2);
            ResampleMethod m = ResampleMethod::kNearest;
            if (EqualsNoCase(method, "Cubic")) {
                m = ResampleMethod::kCubic;
            } else if (EqualsNoCase(method, "Bilinear")) {
                m = ResampleMethod::kBilinear;
            } else if (!EqualsNoCase(method, "Nearest")) {
                Fail(*call.operands[2], "unknown resampling method '" + method + "'");
            }
            return MakeResample(Build(*call.operands[0]), Number(call, 1), m);
        }
        if (is("Shift")) {
            Arity(call, 3);
            return MakeShift(Build(*call.operands[0]), Number(call, 1), Number(call, 2));
        }
        Fail(call, "unknown function '" + f + "'");
    }

    const std::string& text_;
    const std::function<NodePtr(const std::string&)>& lookup_;
};

void Tell(const std::string& line) {
    if (const AlgebraJournal& journal = Journal()) journal(line);
}

// Adds a bound input to the inputs of a description: a stored grid by its
// path, a computed one by its expression followed by its own inputs, so that
// a grid names every file it was computed from. A name keeps what it was
// first bound to.
void DescribeInput(GridDescription& description, const std::string& name, const Raster& input) {
    auto& inputs = description.inputs;
    if (std::ranges::any_of(inputs, [&](const auto& known) { return known.first == name; })) return;
    const RasterDataset& dataset = runtime::Deref(input.Dataset());
    if (!dataset.IsTemporary()) {
        inputs.emplace_back(name, dataset.Path());
    } else {
        const GridDescription& computed = dataset.Description();
        inputs.emplace_back(name, computed.expression);
        for (const auto& input : computed.inputs) {
            if (std::ranges::none_of(inputs,
                                     [&](const auto& k) { return k.first == input.first; })) {
                inputs.push_back(input);
            }
        }
    }
}

// The result of an operation, as a computed grid that can tell where it came from.
RasterPtr Described(NodePtr root, std::string expression,
                    const std::vector<std::pair<std::string, RasterPtr>>& inputs) {
    RasterDatasetPtr dataset = RasterDataset::Temporary(root);
    GridDescription& description = dataset->Description();
    description.expression = std::move(expression);
    for (const auto& [name, input] : inputs) DescribeInput(description, name, *input);
    return std::make_shared<Raster>(std::move(root), std::move(dataset));
}

}  // namespace

AlgebraJournal& Journal() {
    static AlgebraJournal journal;
    return journal;
}

RasterMapAlgebraOp::RasterMapAlgebraOp() { Tell("RasterMapAlgebraOp"); }

void RasterMapAlgebraOp::OutWorkspace(const RasterWorkspacePtr& workspace) {
    Tell("OutWorkspace " + (workspace ? workspace->PathName() : std::string("(none)")));
    outWorkspace_ = workspace;
}

bool RasterMapAlgebraOp::NoCase::operator()(const std::string& a, const std::string& b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) <
               std::tolower(static_cast<unsigned char>(y));
    });
}

void RasterMapAlgebraOp::BindRaster(const RasterPtr& raster, const std::string& name) {
    Tell("BindRaster " + name);
    if (!raster) throw runtime::RuntimeFailure(runtime::kObjectNotSet);
    bindings_[name] = raster;
}

void RasterMapAlgebraOp::UnbindRaster(const std::string& name) {
    Tell("UnbindRaster " + name);
    bindings_.erase(name);
}

RasterPtr RasterMapAlgebraOp::Execute(const std::string& expression) {
    Tell("Execute " + expression);
    EnsureGdal();
    const ExprPtr tree = ParseExpression(expression);
    std::vector<std::pair<std::string, RasterPtr>> used;
    const std::function<NodePtr(const std::string&)> lookup = [&](const std::string& name) {
        auto found = bindings_.find(name);
        if (found == bindings_.end())
            throw EngineFailure("Map algebra: unbound raster '" + name + "'");
        used.emplace_back(found->first, found->second);
        return found->second->Node();
    };
    NodePtr root = Builder(expression, lookup).Build(*tree);
    if (root->IsScalar()) {
        throw EngineFailure("Map algebra: '" + expression + "' has no raster in it");
    }
    return Described(std::move(root), expression, used);
}

void RasterMapAlgebraOp::SetCellSize(int setting, const std::string& value) {
    Tell("SetCellSize " + std::to_string(setting) + " " + value);
    if (setting != 1)
        throw EngineFailure("Cell size setting " + std::to_string(setting) + " is not supported");
    cellSize_ = value;
}

void RasterMapAlgebraOp::SetExtent(int setting, const RasterPtr& raster) {
    Tell("SetExtent " + std::to_string(setting));
    if (setting != 2)
        throw EngineFailure("Extent setting " + std::to_string(setting) + " is not supported");
    extent_ = raster;
}

RasterPtr RasterSurfaceOp::Slope(const RasterPtr& raster, int measure, double zFactor) {
    Tell("Slope " + std::to_string(measure));
    if (measure != 1)
        throw EngineFailure("Slope measure " + std::to_string(measure) + " is not supported");
    NodePtr surface = runtime::Deref(raster).Node();
    if (zFactor != 1.0) surface = MakeBinary("*", surface, MakeScalar(zFactor, false));
    return Described(MakeSlope(surface),
                     "Slope([surface]) in degrees, z factor " + FormatNumber(zFactor),
                     {{"surface", raster}});
}

}  // namespace halvane::raster
