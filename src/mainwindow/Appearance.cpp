#include "Appearance.h"

#include "platform/MainQueue.h"
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>

namespace Appearance {

namespace {

QPalette darkPalette()
{
    QPalette dark;
    const QColor window(45, 45, 48), base(30, 30, 32), text(230, 230, 230);
    dark.setColor(QPalette::Window, window);
    dark.setColor(QPalette::WindowText, text);
    dark.setColor(QPalette::Base, base);
    dark.setColor(QPalette::AlternateBase, QColor(38, 38, 41));
    dark.setColor(QPalette::ToolTipBase, QColor(60, 60, 64));
    dark.setColor(QPalette::ToolTipText, text);
    dark.setColor(QPalette::PlaceholderText, QColor(150, 150, 155));
    dark.setColor(QPalette::Text, text);
    dark.setColor(QPalette::Button, QColor(60, 60, 64));
    dark.setColor(QPalette::ButtonText, text);
    dark.setColor(QPalette::BrightText, QColor(255, 90, 90));
    dark.setColor(QPalette::Highlight, QColor(42, 110, 200));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    dark.setColor(QPalette::Link, QColor(90, 160, 255));
    dark.setColor(QPalette::Light, QColor(80, 80, 84));
    dark.setColor(QPalette::Midlight, QColor(70, 70, 74));
    dark.setColor(QPalette::Mid, QColor(90, 90, 94));
    dark.setColor(QPalette::Dark, QColor(25, 25, 27));
    dark.setColor(QPalette::Shadow, QColor(10, 10, 10));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        dark.setColor(QPalette::Disabled, role, QColor(120, 120, 124));
    return dark;
}

QString &systemStyleName()
{
    static QString name;
    return name;
}

} // namespace

QString settingKey()
{
    return QStringLiteral("appearance");
}

Mode storedMode()
{
    const QVariant stored = UserDefaults::standard().objectForKey(settingKey());
    bool ok = false;
    const int mode = stored.toInt(&ok);
    if (!ok || mode < 0 || mode > 2)
        return Mode::system;
    return Mode(mode);
}

void apply(Mode mode)
{
    if (systemStyleName().isEmpty())
        systemStyleName() = QApplication::style()->name();
    switch (mode) {
    case Mode::system:
        QApplication::setStyle(QStyleFactory::create(systemStyleName()));
        QApplication::setPalette(QApplication::style()->standardPalette());
        break;
    case Mode::light:
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
        QApplication::setPalette(QApplication::style()->standardPalette());
        break;
    case Mode::dark:
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
        QApplication::setPalette(darkPalette());
        break;
    }
}

void applyStoredModeAndFollowChanges()
{
    if (storedMode() != Mode::system)
        apply(storedMode());
    UserDefaults::standard().addObserver(
        settingKey(), [](const QString &) { MainQueue::runOrPost([] { apply(storedMode()); }); });
}

} // namespace Appearance
