#pragma once

#include <cstdint>

#include "pool/work_pool.h"

namespace plenar {

// Runs job(0) to job(count - 1): in order on the calling thread, or as one batch of the pool if it has two workers or
// more.
template <class Job>
void RleForEachBand(WorkPool& pool, uint32_t count, const Job& job) {
    if (pool.WorkerCount() >= 2) {
        RunBatch(pool, count, job);
        return;
    }
    for (uint32_t band = 0; band < count; ++band) {
        job(band);
    }
}

}  // namespace plenar
