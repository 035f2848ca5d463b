// Runs on the kernels of one target after the other.
#pragma once

#include "simd/target.h"

namespace plenar_test {

class ForcedTarget {
public:
    explicit ForcedTarget(plenar::Target target) { plenar::ForceTarget(target); }
    ~ForcedTarget() { plenar::ForceTarget(plenar::RunnableTargets().back()); }
    ForcedTarget(const ForcedTarget&) = delete;
    ForcedTarget& operator=(const ForcedTarget&) = delete;
};

template <class Call>
void OnEachTarget(const Call& call) {
    for (const plenar::Target target : plenar::RunnableTargets()) {
        const ForcedTarget forced(target);
        call(NameOf(target));
    }
}

}  // namespace plenar_test
