#pragma once

#include "tests/ui/OffscreenApplication.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace tessarune {

/// Any message of Qt during a test makes it fail, except for two harmless ones.
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
    /// Derived tests own the windows, so these are destroyed by now.
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
