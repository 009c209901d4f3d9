#include "propertypanelhelpertest.h"

#include "constants.h"
#include "propertypanelhelper.h"
#include "testicontheme.h"
#include "vdguiglobals.h"
#include "vdstyle.h"

#include <QTemporaryDir>
#include <QTest>

namespace {
QByteArray stored(const QSize& size, const QColor& colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return VDGuiGlobals::imageToDB(image);
}

QSize logicalSize(const QPixmap& pixmap)
{
    return pixmap.size() / pixmap.devicePixelRatio();
}
}  // namespace

void PropertyPanelHelperTest::formats()
{
    const QTextCharFormat title = PropertyPanelHelper::titleformat();
    const QTextCharFormat text = PropertyPanelHelper::textformat();
    const QTextCharFormat name = PropertyPanelHelper::nameformat();

    QVERIFY(title.font().weight() > text.font().weight());
    QVERIFY(title.font().pointSizeF() > text.font().pointSizeF());
    QCOMPARE(title.foreground().color(), VDGuiGlobals::titleColor());
    QVERIFY(name.font().bold());
    QVERIFY(name.font().pointSizeF() > title.font().pointSizeF());
}

void PropertyPanelHelperTest::photo_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("scaled");
    QTest::addColumn<QSize>("size");

    const QByteArray landscape = stored({300, 200}, Qt::red);
    QTest::newRow("landscape, scaled") << db::orgstructure::WORKER << landscape << true << QSize(120, 80);
    QTest::newRow("portrait, scaled") << db::orgstructure::WORKER << stored({100, 300}, Qt::red) << true
                                      << QSize(50, 150);
    QTest::newRow("preview, enlarged") << db::orgstructure::WORKER << stored({40, 50}, Qt::red) << true
                                       << QSize(120, 150);
    QTest::newRow("as stored") << db::orgstructure::WORKER << landscape << false << QSize(300, 200);
    QTest::newRow("no data") << db::orgstructure::WORKER << QByteArray() << true << QSize(120, 150);
    QTest::newRow("no picture in the data") << db::orgstructure::WORKER << QByteArray("0badf00d") << true
                                            << QSize(120, 150);
    QTest::newRow("no data, another type") << db::misc::CARD << QByteArray() << false << QSize(120, 150);
}

void PropertyPanelHelperTest::photo()
{
    QFETCH(QString, type);
    QFETCH(QByteArray, data);
    QFETCH(bool, scaled);
    QFETCH(QSize, size);

    const QPixmap pixmap = PropertyPanelHelper::pixmapByPhotoType(type, data, scaled, QString());
    QVERIFY(!pixmap.isNull());
    QCOMPARE(logicalSize(pixmap), size);
}

void PropertyPanelHelperTest::label()
{
    const QIcon icon = QIcon::fromTheme(QStringLiteral("action-unlock"));
    QFont font;
    font.setPointSize(10);
    const QPixmap narrow = PropertyPanelHelper::createColoredText(icon, QStringLiteral("Офис"), Qt::white,
                                                                  vdstyle::vdMainColor, font, 8, 8);
    const QPixmap wide = PropertyPanelHelper::createColoredText(icon, QStringLiteral("Офис"), Qt::white,
                                                                vdstyle::vdMainColor, font, 18, 8);
    const QPixmap longer = PropertyPanelHelper::createColoredText(icon, QStringLiteral("Офис и склад"), Qt::white,
                                                                  vdstyle::vdMainColor, font, 8, 8);

    QCOMPARE(logicalSize(wide).width() - logicalSize(narrow).width(), 20);
    QCOMPARE(logicalSize(wide).height(), logicalSize(narrow).height());
    QVERIFY(logicalSize(longer).width() > logicalSize(narrow).width());
    QVERIFY(logicalSize(narrow).height() >= 16 + 2 * 8);

    // Inside the paddings: the ground, then the icon at the left, in the middle.
    const QImage image = narrow.toImage();
    const qreal ratio = image.devicePixelRatio();
    const int middle = int(image.height() / 2);
    const QColor ground = image.pixelColor(int(6 * ratio), middle);
    QCOMPARE(ground.rgb(), vdstyle::vdMainColor.rgb());
    QCOMPARE(image.pixelColor(int((2 + 8 + 8) * ratio), middle).rgb(),
             TestIconTheme::colour(QStringLiteral("action-unlock")).rgb());
    // Rounded: the very corner stays clear.
    QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
}
