#pragma once

#include "tests/ui/OffscreenApplication.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace tessarune {

/// What Qt says on standard error while a window is open fails the test.
class WarningsFail : public ::testing::Test {
  protected:
    WarningsFail() {
        qputenv("QT_QUICK_BACKEND", "software");
        before_ =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
                if (!text.contains(QStringLiteral("This plugin")) &&
                    !text.contains(QStringLiteral("XDG_RUNTIME_DIR")))
                    warnings() << text;
            });
    }
    /// The windows, which are the test's own, have gone by now.
    ~WarningsFail() override {
        qInstallMessageHandler(before_);
        EXPECT_TRUE(warnings().isEmpty()) << warnings().join('\n').toStdString();
        warnings().clear();
    }

  private:
    static QStringList& warnings() {
        static QStringList all;
        return all;
    }
    QtMessageHandler before_ = nullptr;
};

} // namespace tessarune
