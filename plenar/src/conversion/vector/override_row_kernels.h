// All vector kernels of rows, for the target that the including source is compiled for.
#pragma once

#include "conversion/vector/copy.h"
#include "conversion/vector/exchange.h"
#include "conversion/vector/fixed_to_float.h"
#include "conversion/vector/pack.h"
#include "conversion/vector/split_merge.h"
#include "conversion/vector/unpack.h"
#include "conversion/vector/unpack_groups.h"

namespace plenar {
namespace {

void OverrideWithVectors(RowKernels& kernels) {
    narrower = kernels;
    kernels = {
        .copy = CopyLines<false>,
        .streamCopy = CopyLines<true>,
        .streamLines = StreamLines,
        .finishStream = TargetVector::FinishStream,
        .splitRow = SplitRow,
        .mergeRow = MergeRow,
        .swapPairs = SwapPairs,
        .reverseTriples = ReverseTriples,
        .packRow10 = PackRow<2>,
        .packRow12 = PackRow<4>,
        .unpackRow10 = UnpackRow<2>,
        .unpackRow12 = UnpackRow<4>,
        .packedGroupsToPlane = PackedGroupsToPlane,
        .planeToPackedGroups = PlaneToPackedGroups,
        .fixedRowToFloat = FixedRowToFloat,
    };
}

}  // namespace
}  // namespace plenar
