#pragma once

#include "core/async/Task.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <chrono>
#include <memory>
#include <optional>

/// As Qt's macros of this kind, with time enough for a machine that is busy with other things.
#define EVENTUALLY(condition) QTRY_VERIFY_WITH_TIMEOUT(condition, 60'000)
#define EVENTUALLY_EQUAL(actual, expected) QTRY_COMPARE_WITH_TIMEOUT(actual, expected, 60'000)

namespace larkspur::test {

using namespace std::chrono_literals;

template <typename T>
Task<> keep(Task<T> task, std::shared_ptr<std::optional<T>> into) {
    *into = co_await task;
}

inline Task<> keepEnd(Task<> task, std::shared_ptr<bool> ended) {
    co_await task;
    *ended = true;
}

/// Runs the event loop until the condition holds; false after the time limit.
template <typename Condition>
bool spinUntil(Condition condition, std::chrono::milliseconds limit = 60s) {
    QElapsedTimer clock;
    clock.start();
    QTimer tick; // a condition may come true without any event
    tick.start(5);
    while (!condition() && clock.elapsed() < limit.count()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return condition();
}

/// The value of a task, which must come within the time limit.
template <typename T>
T await(Task<T> task, std::chrono::milliseconds limit = 120s) {
    const auto value = std::make_shared<std::optional<T>>();
    [[maybe_unused]] const auto keeping = keep(std::move(task), value);
    if (!spinUntil([&] { return value->has_value(); }, limit))
        qFatal("A task has not ended within its time limit");
    return std::move(**value);
}

inline void await(Task<> task, std::chrono::milliseconds limit = 120s) {
    const auto ended = std::make_shared<bool>(false);
    [[maybe_unused]] const auto keeping = keepEnd(std::move(task), ended);
    if (!spinUntil([&] { return *ended; }, limit))
        qFatal("A task has not ended within its time limit");
}

} // namespace larkspur::test
