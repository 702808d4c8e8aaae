#pragma once

#include "core/async/Completion.h"
#include "core/async/Task.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThreadPool>

#include <type_traits>

namespace larkspur {

/// Runs a blocking function in the thread pool and resumes on the main thread with its value. The function
/// gets its input by value and must not throw: failures are part of its result.
template <typename Function>
Task<std::invoke_result_t<Function>> runInWorker(Function function) {
    using Value = std::invoke_result_t<Function>;
    Completion<Value> done;
    QThreadPool::globalInstance()->start([function = std::move(function), done]() mutable {
        // Boxed, because a queued call needs a copyable function and a value may be move-only.
        auto value = std::make_shared<Value>(function());
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [done, value]() mutable { done.complete(std::move(*value)); },
            Qt::QueuedConnection);
    });
    co_return co_await done;
}

} // namespace larkspur
