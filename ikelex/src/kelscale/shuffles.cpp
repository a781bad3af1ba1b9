// Makes the shuffles of a table. They hold the table's weights, cut into pieces where they do not
// fit, and change no byte.
#include "shuffles.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <new>

#include "kelbitmap/integers.h"
#include "plan.h"

namespace kel {

namespace {

constexpr std::size_t kMostGroups = 2;
constexpr std::size_t kMostGroupPixels = 16;

// What is left of a record are its weights from nNext on, the first of them reduced to nRest.
struct Rest {
    const PixelContribType* pRecord = nullptr;
    int nNext = 0;
    int nRest = 0;

    bool Done() const { return pRecord == nullptr || nNext > pRecord->nRight; }
    void SkipZeros() {
        while (!Done() && (nRest = pRecord->pWeights[nNext - pRecord->nLeft]) == 0) {
            ++nNext;
        }
    }
};

// One step of a group.
struct GroupStep {
    std::size_t nLoad = 0;
    unsigned char orders[4 * kMostGroupPixels] = {};
    signed char weights[4 * kMostGroupPixels] = {};
};

// Takes as much of a record as fits into one lane.
void FillLane(Rest& rest, std::size_t nLoad, const ShuffleShape& shape, unsigned char* pOrders,
              signed char* pWeights) {
    int nRoom = shape.nPairLimit;
    for (std::size_t k = 0; k < 4 && !rest.Done(); ++k) {
        const std::size_t nAt = 3 * AsSize(rest.nNext);
        if (nAt + 3 > nLoad + shape.GroupBytes()) {
            return;
        }
        const int nLimit = std::min(nRoom, SCHAR_MAX);
        const int nPiece = std::clamp(rest.nRest, -nLimit, nLimit);
        pOrders[k] = LowByte(nAt - nLoad);
        pWeights[k] = static_cast<signed char>(nPiece);
        nRoom = k == 1 ? shape.nPairLimit : nRoom - std::abs(nPiece);
        rest.nRest -= nPiece;
        if (rest.nRest == 0) {
            ++rest.nNext;
            rest.SkipZeros();
        }
    }
}

// Where the steps of a plan are written.
struct Output {
    const ShuffleShape& shape;
    std::size_t nInBytes;
    std::size_t nCapacity;  // in steps
    ShufflePlan& plan;

    void Store(std::size_t nStep, std::size_t nGroup, const GroupStep& step) {
        const std::size_t nAt = nStep * shape.nGroups + nGroup;
        plan.pLoads[nAt] = Low32(step.nLoad);
        std::copy_n(step.orders, shape.GroupBytes(), &plan.pOrders[nAt * shape.GroupBytes()]);
        std::copy_n(step.weights, shape.GroupBytes(), &plan.pWeights[nAt * shape.GroupBytes()]);
    }
};

// Writes the steps of a group of records, those from x on, from step nStep on. Returns the step
// after them. The load of a step begins with the first source pixel that is left.
std::size_t CutGroup(const LineContribType& table, std::size_t x, std::size_t nStep,
                     std::size_t nGroup, Output& output) {
    const ShuffleShape& shape = output.shape;
    Rest rests[kMostGroupPixels];
    const std::size_t nRecords = AsSize(table.nLineLength);
    for (std::size_t i = 0; i < shape.nGroupPixels && x + i < nRecords; ++i) {
        rests[i].pRecord = &table.pPixels[x + i];
        rests[i].nNext = rests[i].pRecord->nLeft;
        rests[i].SkipZeros();
    }
    for (; nStep < output.nCapacity; ++nStep) {
        int nFirst = INT_MAX;
        for (const Rest& rest : rests) {
            nFirst = rest.Done() ? nFirst : std::min(nFirst, rest.nNext);
        }
        if (nFirst == INT_MAX) {
            return nStep;
        }
        GroupStep step;
        // No load reaches beyond the row.
        step.nLoad = std::min(3 * AsSize(nFirst), output.nInBytes - shape.GroupBytes());
        for (std::size_t i = 0; i < shape.nGroupPixels; ++i) {
            FillLane(rests[i], step.nLoad, shape, step.orders + 4 * i, step.weights + 4 * i);
        }
        output.Store(nStep, nGroup, step);
    }
    return nStep;
}

// Writes the steps of the block of records from x on. Returns the step after them.
std::size_t CutBlock(const LineContribType& table, std::size_t x, std::size_t nStart,
                     Output& output) {
    std::size_t ends[kMostGroups];
    std::size_t nEnd = nStart;
    for (std::size_t g = 0; g < output.shape.nGroups; ++g) {
        ends[g] = CutGroup(table, x + g * output.shape.nGroupPixels, nStart, g, output);
        nEnd = std::max(nEnd, ends[g]);
    }
    // A group with fewer steps than the others goes on without weights.
    for (std::size_t g = 0; g < output.shape.nGroups; ++g) {
        for (std::size_t nStep = ends[g]; nStep < nEnd; ++nStep) {
            output.Store(nStep, g, GroupStep());
        }
    }
    return nEnd;
}

}  // namespace

bool PlanShuffles(const LineContribType& table, std::size_t nInLength, const ShuffleShape& shape,
                  std::size_t nMostSteps, ShufflePlan& plan) {
    const std::size_t nInBytes = std::size_t{3} * nInLength;
    const std::size_t nRecords = AsSize(table.nLineLength);
    const std::size_t nBlocks = (nRecords + shape.BlockPixels() - 1) / shape.BlockPixels();
    if (nInBytes < shape.GroupBytes() || nInBytes > UINT_MAX || HasLargeWeights(table)) {
        return false;
    }
    // One step more than may be used shows that a plan is too long.
    Output output = {shape, nInBytes, nMostSteps * nBlocks + 1, plan};
    plan.pStart.reset(new (std::nothrow) unsigned int[nBlocks + 1]);
    plan.pLoads.reset(new (std::nothrow) unsigned int[output.nCapacity * shape.nGroups]);
    plan.pOrders.reset(new (std::nothrow) unsigned char[output.nCapacity * shape.StepBytes()]);
    plan.pWeights.reset(new (std::nothrow) signed char[output.nCapacity * shape.StepBytes()]);
    if (plan.pStart == nullptr || plan.pLoads == nullptr || plan.pOrders == nullptr ||
        plan.pWeights == nullptr) {
        return false;
    }
    // Blocks differ little, so a plan that is too long shows early.
    constexpr std::size_t kSlack = 4;
    std::size_t nSteps = 0;
    for (std::size_t i = 0; i < nBlocks; ++i) {
        plan.pStart[i] = Low32(nSteps);
        nSteps = CutBlock(table, i * shape.BlockPixels(), nSteps, output);
        if (nSteps == output.nCapacity || nSteps > nMostSteps * (i + kSlack)) {
            return false;
        }
    }
    plan.pStart[nBlocks] = Low32(nSteps);
    plan.bUnsigned16 = IsUnsigned16(table);
    return true;
}

}  // namespace kel
