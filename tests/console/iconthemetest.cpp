#include "iconthemetest.h"

#include "icontheme.h"

#include <QFileInfo>
#include <QIcon>
#include <QImage>
#include <QTest>

void IconThemeTest::isCurrent()
{
    QCOMPARE(QIcon::themeName(), IconTheme::name());
}

void IconThemeTest::drawsEveryIconOfThePlugin_data()
{
    QTest::addColumn<QString>("name");

    // Every name the tab and the platform's widgets ask the theme for.
    const QStringList names{
        "common-pause1", "common-pause", "common-play", "common-online", "common-cancel", "common-nofilter",
        "common-info", "common-warning", "common-fingerprint",
        "action-add", "action-remove", "action-config", "action-finger", "action-left", "action-right",
        "action-unlock", "action-search",
        "object-OT_PASS_REQUEST", "object-OT_WORKER", "object-OT_WORKER-d", "object-OT_USER", "object-OT_CARD",
        "object-OT_ACCESS_POLICY", "object-OT_FIRM", "object-OT_DEPARTMENT", "object-OT_SUBJECTROOT",
    };
    for (const QString& name : names)
        QTest::newRow(qPrintable(name)) << name;
}

void IconThemeTest::drawsEveryIconOfThePlugin()
{
    QFETCH(QString, name);

    QVERIFY(QIcon::hasThemeIcon(name));
    // An icon of its own: the loader would otherwise fall back on a shorter name, so that
    // "object-OT_WORKER-d" silently looked like "object-OT_WORKER".
    QVERIFY(QFileInfo::exists(IconTheme::iconFolder() + QLatin1Char('/') + name + QStringLiteral(".svg")));

    const QIcon icon = QIcon::fromTheme(name);
    for (const int size : {16, 24, 48}) {
        const QImage image = icon.pixmap(size, size).toImage().convertToFormat(QImage::Format_ARGB32);
        QCOMPARE(image.size(), QSize(size, size));
        int drawn = 0;
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x)
                drawn += qAlpha(image.pixel(x, y)) > 0 ? 1 : 0;
        }
        // Not a speck: a real picture covers a good part of its square.
        QVERIFY2(drawn * 8 > size * size, qPrintable(QStringLiteral("%1 px drawn at %2").arg(drawn).arg(size)));
    }
}
