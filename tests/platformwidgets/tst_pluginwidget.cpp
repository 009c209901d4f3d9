#include "messagewidget.h"
#include "pluginwidget.h"

#include <QtTest>

class TestPluginWidget : public QObject
{
    Q_OBJECT

private slots:
    // Notes stack from the bottom of the page, the newest on top, on the left half where they hide
    // no card; one that goes makes room.
    void notesMoveDownWhenOneCloses()
    {
        PluginWidget page;
        page.resize(1000, 400);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        page.showPopupInformationMessage(QStringLiteral("первая"), 0);
        page.showPopupCriticalMessage(QStringLiteral("вторая"), 0);
        const QList<MessageWidget*> notes = page.findChildren<MessageWidget*>();
        QCOMPARE(notes.size(), 2);
        MessageWidget* first = notes.first()->text() == QStringLiteral("первая") ? notes.first() : notes.last();
        const QPointer<MessageWidget> second = first == notes.first() ? notes.last() : notes.first();
        const int bottom = first->geometry().bottom();
        QVERIFY(second->geometry().bottom() < first->geometry().top());
        QVERIFY(first->geometry().right() < page.width() / 2);

        first->close();
        QTRY_COMPARE(page.findChildren<MessageWidget*>().size(), 1);
        QTRY_COMPARE(second->geometry().bottom(), bottom);
    }

    // A note with a time closes itself and is deleted, or notes would pile up over a long shift.
    void noteClosesItselfAndIsDeleted()
    {
        QWidget page;
        page.resize(300, 200);
        QPointer<MessageWidget> note = new MessageWidget(QStringLiteral("Готово"), MessageWidget::Success, &page);
        page.show();
        note->popup(50);
        QVERIFY(note->isVisible());
        QTRY_VERIFY(note.isNull());
    }
};

QTEST_MAIN(TestPluginWidget)
#include "tst_pluginwidget.moc"
