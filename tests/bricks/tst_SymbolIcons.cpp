#include "bricks/SymbolIcons.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QPalette>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

namespace {

struct Theme
{
    QColor background;
    QColor text;
};

const Theme light {QColor(0xf6, 0xf6, 0xf6), QColor(0x1d, 0x1d, 0x1f)};
const Theme dark {QColor(0x2b, 0x2b, 0x2d), QColor(0xe8, 0xe8, 0xea)};

void usePalette(const Theme &theme)
{
    QPalette palette;
    palette.setColor(QPalette::Window, theme.background);
    palette.setColor(QPalette::WindowText, theme.text);
    palette.setColor(QPalette::Disabled, QPalette::WindowText,
                     QColor::fromRgbF((theme.text.redF() + theme.background.redF()) / 2,
                                      (theme.text.greenF() + theme.background.greenF()) / 2,
                                      (theme.text.blueF() + theme.background.blueF()) / 2));
    QApplication::setPalette(palette);
}

QImage over(const QPixmap &pixmap, const QColor &background)
{
    QImage image(pixmap.size(), QImage::Format_ARGB32);
    image.fill(background);
    QPainter painter(&image);
    painter.drawPixmap(0, 0, pixmap);
    return image;
}

int distance(QRgb a, QRgb b)
{
    return qAbs(qRed(a) - qRed(b)) + qAbs(qGreen(a) - qGreen(b)) + qAbs(qBlue(a) - qBlue(b));
}

// How many pixels stand out from the background, and how many of those are near the text colour.
struct Ink
{
    int marked = 0;
    int inTextColor = 0;
};

Ink inkOf(const QImage &image, const Theme &theme)
{
    Ink ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            if (distance(pixel, theme.background.rgb()) > 60)
                ++ink.marked;
            if (distance(pixel, theme.text.rgb()) < 30)
                ++ink.inTextColor;
        }
    }
    return ink;
}

} // namespace

class tst_SymbolIcons : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void everySymbolDraws_data();
    void everySymbolDraws();
    void themeIconComesFirst();
    void cleanupTestCase();
};

void tst_SymbolIcons::initTestCase()
{
    // No theme, so every symbol shows its own drawing.
    QIcon::setThemeSearchPaths({});
    QIcon::setThemeName(u"palomet-no-theme"_s);
}

void tst_SymbolIcons::everySymbolDraws_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isDark");
    for (const QString &name : SymbolIcons::names()) {
        QTest::addRow("%s light", qPrintable(name)) << name << false;
        QTest::addRow("%s dark", qPrintable(name)) << name << true;
    }
}

void tst_SymbolIcons::everySymbolDraws()
{
    QFETCH(QString, name);
    QFETCH(bool, isDark);
    const Theme &theme = isDark ? dark : light;
    const Theme &other = isDark ? light : dark;

    // Made and drawn under the other palette first: a palette switch must still recolour it.
    usePalette(other);
    const QIcon icon = SymbolIcons::icon(name);
    QVERIFY(!icon.pixmap(QSize(32, 32)).isNull());
    usePalette(theme);

    const QPixmap pixmap = icon.pixmap(QSize(32, 32));
    QCOMPARE(pixmap.size(), SymbolIcons::designSize(name).scaled(32, 32, Qt::KeepAspectRatio));
    const Ink ink = inkOf(over(pixmap, theme.background), theme);
    const int area = pixmap.width() * pixmap.height();
    QVERIFY2(ink.marked > area / 30, qPrintable(u"only %1 pixels drawn"_s.arg(ink.marked)));
    QVERIFY2(ink.marked < area * 9 / 10, "the symbol covers its whole square");
    QVERIFY2(
        ink.inTextColor > ink.marked / 4,
        qPrintable(u"%1 of %2 pixels in the text colour"_s.arg(ink.inTextColor).arg(ink.marked)));

    // A disabled icon is drawn, but fainter than the normal one.
    const Ink disabled
        = inkOf(over(icon.pixmap(QSize(32, 32), QIcon::Disabled), theme.background), theme);
    QVERIFY(disabled.marked > 0);
    QVERIFY(disabled.inTextColor < ink.inTextColor);

    // The tinted form carries exactly the tint wherever it is opaque.
    const QColor tint(0x34, 0xc7, 0x59);
    const QImage tinted = SymbolIcons::image(name, tint, QSize(48, 48));
    int opaque = 0;
    for (int y = 0; y < tinted.height(); ++y) {
        for (int x = 0; x < tinted.width(); ++x) {
            const QRgb pixel = tinted.pixel(x, y);
            if (qAlpha(pixel) == 255) {
                ++opaque;
                QCOMPARE(pixel, tint.rgb());
            }
        }
    }
    QVERIFY(opaque > 48 * 48 / 40);
}

void tst_SymbolIcons::themeIconComesFirst()
{
    QTemporaryDir themes;
    QVERIFY(themes.isValid());
    const QDir root(themes.path());
    QVERIFY(root.mkpath(u"test-theme/scalable/actions"_s));
    QFile index(root.filePath(u"test-theme/index.theme"_s));
    QVERIFY(index.open(QIODevice::WriteOnly));
    index.write("[Icon Theme]\nName=test-theme\nDirectories=scalable/actions\n\n"
                "[scalable/actions]\nSize=16\nMinSize=8\nMaxSize=512\nType=Scalable\n");
    index.close();
    // A plain icon and a symbolic one, both solid red.
    for (const QString &file : {u"view-refresh.svg"_s, u"edit-copy-symbolic.svg"_s}) {
        QFile icon(root.filePath(u"test-theme/scalable/actions/"_s + file));
        QVERIFY(icon.open(QIODevice::WriteOnly));
        icon.write("<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"16\" height=\"16\">"
                   "<rect width=\"16\" height=\"16\" fill=\"#ff0000\"/></svg>");
    }

    QIcon::setThemeSearchPaths({themes.path()});
    QIcon::setThemeName(u"test-theme"_s);
    usePalette(light);
    const QImage fromTheme
        = SymbolIcons::icon(u"arrow.triangle.2.circlepath").pixmap(QSize(16, 16)).toImage();
    // A symbolic icon is taken for its shape and drawn in the text colour.
    const QImage symbolic = SymbolIcons::icon(u"clipboard").pixmap(QSize(16, 16)).toImage();
    // The theme has no "edit-delete": the bundled drawing stands in.
    const QImage bundled = SymbolIcons::icon(u"trash").pixmap(QSize(16, 16)).toImage();
    // A pin with a badge is always drawn here, so its two parts match.
    const QImage composite = SymbolIcons::icon(u"mappin+plus").pixmap(QSize(16, 16)).toImage();
    QIcon::setThemeName(u"palomet-no-theme"_s);
    QIcon::setThemeSearchPaths({});

    QCOMPARE(fromTheme.pixel(8, 8), qRgb(0xff, 0, 0));
    QCOMPARE(symbolic.pixel(8, 8), light.text.rgb());
    QVERIFY(inkOf(over(QPixmap::fromImage(bundled), light.background), light).inTextColor > 0);
    QCOMPARE(composite.size(), QSize(14, 16));
    QCOMPARE(SymbolIcons::themeIconName(u"arrow.triangle.2.circlepath"), u"view-refresh"_s);
    QCOMPARE(SymbolIcons::themeIconName(u"mappin+plus"), QString());
}

// A sheet of every symbol at 16, 24 and 32 and in the table's three tints, on both palettes,
// saved next to the test for a look.
void tst_SymbolIcons::cleanupTestCase()
{
    const QStringList names = SymbolIcons::names();
    const QList<QColor> tints {QColor(0x34, 0xc7, 0x59), QColor(0xff, 0xcc, 0x00),
                               QColor(0xff, 0x95, 0x00)};
    const int cell = 44, label = 220, columns = 6, ratio = 2;
    QImage sheet(QSize(label + 2 * columns * cell, int(names.size()) * cell) * ratio,
                 QImage::Format_ARGB32);
    sheet.setDevicePixelRatio(ratio);
    QPainter painter(&sheet);
    for (const Theme *theme : {&light, &dark}) {
        usePalette(*theme);
        const int left = theme == &light ? label : label + columns * cell;
        const int from = theme == &light ? 0 : left;
        painter.fillRect(from, 0, left + columns * cell - from, sheet.height(), theme->background);
        painter.setPen(theme->text);
        for (int row = 0; row < names.size(); ++row) {
            const QString &name = names.at(row);
            if (theme == &light)
                painter.drawText(QRect(8, row * cell, label, cell), Qt::AlignVCenter, name);
            for (int column = 0; column < columns; ++column) {
                const QPixmap pixmap = column < 3
                    ? SymbolIcons::icon(name).pixmap(QSize(16, 16) * (column + 2) / 2, ratio)
                    : SymbolIcons::pixmap(name, tints[column - 3], QSize(16, 16), ratio);
                const QSizeF size = pixmap.deviceIndependentSize();
                const QPointF centre(left + column * cell + cell / 2.0, row * cell + cell / 2.0);
                painter.drawPixmap(centre - QPointF(size.width(), size.height()) / 2, pixmap);
            }
        }
    }
    painter.end();
    const QString path = QCoreApplication::applicationDirPath() + u"/symbol-sheet.png"_s;
    QVERIFY(sheet.save(path));
    qInfo("symbol sheet: %s", qPrintable(path));
}

QTEST_MAIN(tst_SymbolIcons)
#include "tst_SymbolIcons.moc"
