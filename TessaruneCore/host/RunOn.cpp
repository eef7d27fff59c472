#include "TessaruneCore/host/RunOn.h"

namespace tessarune {

Task<bool> runOnWithin(Executor worker, double seconds, Block work, Executor back) {
    // The exception of the work, or null if the work succeeded; `nullopt` if the work takes too
    // long.
    const OneShot<std::optional<std::exception_ptr>> ended(back);
    // The block keeps its own queue alive, because the queue's destructor would wait for work that
    // hangs.
    const auto queueOwner = std::make_shared<Executor>(worker);
    worker.run([work = std::move(work), ended, queueOwner]() mutable {
        std::exception_ptr failure;
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
        work = nullptr;
        ended.resume(failure);
    });
    DelayedCall tooLong = back.host().after(seconds, [ended] { ended.resume(std::nullopt); });
    const std::optional<std::exception_ptr> failure = co_await ended;
    tooLong.cancel();
    if (!failure)
        co_return false;
    if (*failure)
        std::rethrow_exception(*failure);
    co_return true;
}

} // namespace tessarune
