#include "TessaruneCore/host/Task.h"

namespace tessarune {

namespace taskDetail {

Detached runDetached(Task<void> task, OneShot<bool> finished, Host&) {
    co_await task;
    finished.resume(true);
}

} // namespace taskDetail

TaskHandle spawn(const Executor& executor, Task<void> task, std::stop_source stop) {
    OneShot<bool> finished(executor);
    // std::function requires a copyable callable, but a task can only be moved.
    auto shared = std::make_shared<Task<void>>(std::move(task));
    executor.run([shared, finished, &host = executor.host()] {
        taskDetail::runDetached(std::move(*shared), finished, host);
    });
    return TaskHandle(std::move(stop), std::move(finished));
}

Task<bool> sleep(Executor executor, double seconds, std::stop_token stop) {
    if (stop.stop_requested())
        co_return false;
    OneShot<bool> awake(executor);
    DelayedCall timer = executor.host().after(seconds, [awake] { awake.resume(true); });
    std::stop_callback onStop(stop, [awake] { awake.resume(false); });
    const bool slept = co_await awake;
    if (!slept)
        timer.cancel();
    co_return slept;
}

} // namespace tessarune
