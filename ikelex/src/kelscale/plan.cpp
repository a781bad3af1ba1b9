// Makes plans of tables.
#include "plan.h"
#include "kelbitmap/integers.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <new>

namespace kel {

namespace {

// Weights beyond this would be cut into too many signed bytes.
constexpr int kLargestWeight = 32767;

// A record whose weights are larger together could leave 32 bits on the way to its sum.
constexpr int kLargestRecord = INT_MAX / 256;

// Makes a plan of what fnEmit(record, sink) hands to its sink. The first round counts, the second
// stores.
template <typename Emit>
bool MakePlan(const LineContribType& table, PassPlan& plan, Emit fnEmit) {
    if (HasLargeWeights(table)) {
        return false;
    }
    const std::size_t nRecords = AsSize(table.nLineLength);
    const std::size_t nPadded = (nRecords + 15) / 16 * 16;
    plan.pStart.reset(new (std::nothrow) unsigned int[nPadded + 1]);
    if (plan.pStart == nullptr) {
        return false;
    }
    std::size_t nSteps = 0;
    for (std::size_t i = 0; i < nRecords; ++i) {
        plan.pStart[i] = Low32(nSteps);
        fnEmit(table.pPixels[i], [&](int, int) { ++nSteps; });
        plan.nMostSteps = std::max(plan.nMostSteps, Low32(nSteps - plan.pStart[i]));
        if (nSteps > INT_MAX) {
            return false;
        }
    }
    std::fill(&plan.pStart[nRecords], &plan.pStart[nPadded] + 1, Low32(nSteps));
    plan.pSteps.reset(new (std::nothrow) PlanStep[nSteps]);
    if (plan.pSteps == nullptr) {
        return false;
    }
    PlanStep* pStep = plan.pSteps.get();
    for (std::size_t i = 0; i < nRecords; ++i) {
        fnEmit(table.pPixels[i], [&](int nIndex, int nWeights) { *pStep++ = {nIndex, nWeights}; });
    }
    plan.bUnsigned16 = IsUnsigned16(table);
    return true;
}

constexpr int kSignedByte = 127;
constexpr int kUnsignedByte = 255;

// Takes a part of nWeight, no further from 0 than nLimit.
int TakePiece(int& nWeight, int nLimit) {
    const int nPiece = std::clamp(nWeight, -nLimit, nLimit);
    nWeight -= nPiece;
    return nPiece;
}

}  // namespace

bool IsUnsigned16(const LineContribType& table) {
    for (int i = 0; i < table.nLineLength; ++i) {
        const PixelContribType& record = table.pPixels[i];
        int nSum = 0;
        for (int j = 0; j <= record.nRight - record.nLeft; ++j) {
            const int nWeight = record.pWeights[j];
            if (nWeight < 0 || nWeight > 256 || (nSum += nWeight) > 256) {
                return false;
            }
        }
    }
    return true;
}

bool HasLargeWeights(const LineContribType& table) {
    for (int i = 0; i < table.nLineLength; ++i) {
        const PixelContribType& record = table.pPixels[i];
        int nRecord = 0;
        for (int j = 0; j <= record.nRight - record.nLeft; ++j) {
            const int nWeight = record.pWeights[j];
            if (nWeight < -kLargestWeight || nWeight > kLargestWeight ||
                (nRecord += std::abs(nWeight)) > kLargestRecord) {
                return true;
            }
        }
    }
    return false;
}

bool PlanTaps(const LineContribType& table, PassPlan& plan) {
    return MakePlan(table, plan, [](const PixelContribType& record, auto fnSink) {
        for (int i = record.nLeft; i <= record.nRight; ++i) {
            if (record.pWeights[i - record.nLeft] != 0) {
                fnSink(i, record.pWeights[i - record.nLeft]);
            }
        }
    });
}

bool PlanGroups(const LineContribType& table, int nPairLimit, PassPlan& plan) {
    return MakePlan(table, plan, [nPairLimit](const PixelContribType& record, auto fnSink) {
        for (int nGroup = record.nLeft / 4; nGroup * 4 <= record.nRight; ++nGroup) {
            int weights[4] = {};
            for (int k = 0; k < 4; ++k) {
                const int i = nGroup * 4 + k;
                if (i >= record.nLeft && i <= record.nRight) {
                    weights[k] = record.pWeights[i - record.nLeft];
                }
            }
            while ((weights[0] | weights[1] | weights[2] | weights[3]) != 0) {
                int nPacked = 0;
                for (int k = 0; k < 4; k += 2) {
                    const int nFirst = TakePiece(weights[k], std::min(nPairLimit, kSignedByte));
                    const int nRoom = std::min(nPairLimit - std::abs(nFirst), kSignedByte);
                    const int nSecond = TakePiece(weights[k + 1], nRoom);
                    nPacked |= LowByte(nFirst) << (8 * k) | LowByte(nSecond) << (8 * k + 8);
                }
                fnSink(nGroup, nPacked);
            }
        }
    });
}

bool PlanColumns(const LineContribType& table, int nPairLimit, PassPlan& plan) {
    const bool bUnsigned = IsUnsigned16(table);
    const int nByteLimit = bUnsigned ? kUnsignedByte : kSignedByte;
    const int nLimit = bUnsigned ? 2 * kUnsignedByte : nPairLimit;  // of a pair
    const unsigned int nMultiple = bUnsigned ? 2 : 4;
    return MakePlan(table, plan, [=](const PixelContribType& record, auto fnSink) {
        unsigned int nSteps = 0;
        int nRoom = nLimit;
        int nLast = 0;
        for (int i = record.nLeft; i <= record.nRight; ++i) {
            int nWeight = record.pWeights[i - record.nLeft];
            while (nWeight != 0) {
                const int nPiece = TakePiece(nWeight, std::min(nRoom, nByteLimit));
                fnSink(i, nPiece);
                nLast = i;
                nRoom = ++nSteps % 2 == 0 ? nLimit : nLimit - std::abs(nPiece);
            }
        }
        for (; nSteps % nMultiple != 0; ++nSteps) {
            fnSink(nLast, 0);
        }
    });
}

bool IsCopy(const LineContribType& table, unsigned int nInLength) {
    if (Low32(table.nLineLength) != nInLength) {
        return false;
    }
    for (int i = 0; i < table.nLineLength; ++i) {
        const PixelContribType& record = table.pPixels[i];
        for (int j = record.nLeft; j <= record.nRight; ++j) {
            if (record.pWeights[j - record.nLeft] != (j == i ? 256 : 0)) {
                return false;
            }
        }
        if (record.nLeft > i || record.nRight < i) {
            return false;
        }
    }
    return true;
}

}  // namespace kel
