#pragma once

#include "tests/ui/StagedHistory.h"
#include "tests/ui/WarningsFail.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

namespace tessarune {

/// The history window over scripted recordings.
class HistoryWindowTests : public WarningsFail {
  protected:
    /// Sets a time zone where it is noon, so that the last hours belong to the same day.
    HistoryWindowTests() {
        const std::time_t now = std::time(nullptr);
        setenv("TZ", ("NOON" + std::to_string(std::gmtime(&now)->tm_hour - 12)).c_str(), 1);
        tzset();
    }

    void open() {
        history.open();
        ASSERT_TRUE(runUntil([&] { return window().isActive() && !model().list()->isLoading(); }));
    }
    QQuickWindow& window() { return history.window->window(); }
    HistoryWindowModel& model() { return history.window->model(); }
    QString cell(int row, int role) {
        return model().list()->data(model().list()->index(row), role).toString();
    }
    std::string titles() {
        std::string all;
        for (int row = 0; row < model().list()->count(); ++row)
            all += cell(row, HistoryListModel::TitleRole).toStdString() + "|";
        return all;
    }

    StagedHistory history;
};

} // namespace tessarune
