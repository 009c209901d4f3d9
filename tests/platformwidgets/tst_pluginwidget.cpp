#include "messagewidget.h"
#include "pluginwidget.h"

#include <QSignalSpy>
#include <QtTest>

#include <algorithm>

class TestPluginWidget : public QObject
{
    Q_OBJECT

private slots:
    void popupsAreRecordedAndAnnounced_data()
    {
        QTest::addColumn<int>("call");
        QTest::addColumn<PluginWidget::PopupKind>("kind");
        QTest::addColumn<MessageWidget::Icon>("icon");
        QTest::newRow("message") << 0 << PluginWidget::PopupKind::Message << MessageWidget::Success;
        QTest::newRow("information") << 1 << PluginWidget::PopupKind::Information << MessageWidget::Information;
        QTest::newRow("critical") << 2 << PluginWidget::PopupKind::Critical << MessageWidget::Critical;
    }

    void popupsAreRecordedAndAnnounced()
    {
        QFETCH(int, call);
        QFETCH(PluginWidget::PopupKind, kind);
        QFETCH(MessageWidget::Icon, icon);

        PluginWidget page;
        QSignalSpy shown(&page, &PluginWidget::popupShown);
        page.showPopupInformationMessage(QStringLiteral("первая"), 0);
        const QString text = QStringLiteral("Заявка сохранена");
        switch (call) {
        case 0:
            page.showPopupMessage(text, MessageWidget::Success, 0);
            break;
        case 1:
            page.showPopupInformationMessage(text, 0);
            break;
        case 2:
            page.showPopupCriticalMessage(text, 0);
            break;
        }

        QCOMPARE(page.popups().size(), 2);
        const PluginWidget::Popup last = page.popups().last();
        QCOMPARE(last.kind, kind);
        QCOMPARE(last.icon, icon);
        QCOMPARE(last.text, text);
        QCOMPARE(shown.count(), 2);
        QCOMPARE(shown.last().at(0).toString(), text);
        QCOMPARE(shown.last().at(1).value<PluginWidget::PopupKind>(), kind);

        const QList<MessageWidget*> notes = page.findChildren<MessageWidget*>();
        QCOMPARE(notes.size(), 2);
        QVERIFY(std::any_of(notes.cbegin(), notes.cend(),
                            [&](MessageWidget* note) { return note->text() == text && note->icon() == icon; }));
    }

    // Notes stack from the bottom of the page, the newest on top, on the left half where they hide
    // no card; one that goes makes room.
    void notesMoveDownWhenOneCloses()
    {
        PluginWidget page;
        page.resize(1000, 400);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        page.showPopupInformationMessage(QStringLiteral("первая"), 0);
        page.showPopupInformationMessage(QStringLiteral("вторая"), 0);
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
