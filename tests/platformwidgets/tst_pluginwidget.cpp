#include "messagewidget.h"
#include "pluginwidget.h"

#include <QSignalSpy>
#include <QtTest>

#include <algorithm>
#include <memory>

namespace {
// The notes of a page, lowest first.
QList<MessageWidget*> notesOf(const QWidget& page)
{
    QList<MessageWidget*> notes = page.findChildren<MessageWidget*>();
    notes.erase(std::remove_if(notes.begin(), notes.end(), [](MessageWidget* note) { return !note->isVisible(); }),
                notes.end());
    std::sort(notes.begin(), notes.end(),
              [](MessageWidget* a, MessageWidget* b) { return a->geometry().bottom() > b->geometry().bottom(); });
    return notes;
}
}  // namespace

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

        page.clearPopups();
        QVERIFY(page.popups().isEmpty());
    }

    void notesStackUpwardFromTheCornerAndFollowThePage()
    {
        PluginWidget page;
        page.resize(800, 600);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));

        page.showPopupInformationMessage(QStringLiteral("первая"), 0);
        page.showPopupCriticalMessage(QStringLiteral("вторая, подлиннее, чтобы заметка была шире прочих"), 0);
        page.showPopupMessage(QStringLiteral("третья"), MessageWidget::Warning, 0);

        QList<MessageWidget*> notes = notesOf(page);
        QCOMPARE(notes.size(), 3);
        QCOMPARE(notes.at(0)->text(), QStringLiteral("первая"));
        QCOMPARE(notes.at(2)->text(), QStringLiteral("третья"));
        for (int i = 0; i < notes.size(); ++i) {
            const QRect note = notes.at(i)->geometry();
            QVERIFY2(page.rect().contains(note), "a note lies inside the page");
            QVERIFY2(page.width() - note.right() < 40, "right-aligned at the corner");
            if (i > 0)
                QVERIFY2(note.bottom() < notes.at(i - 1)->geometry().top(), "above the one before, no overlap");
        }
        QVERIFY(page.height() - notes.at(0)->geometry().bottom() < 40);

        page.resize(1000, 700);
        for (MessageWidget* note : qAsConst(notes))
            QVERIFY(page.width() - note->geometry().right() < 40);
        QVERIFY(page.height() - notes.at(0)->geometry().bottom() < 40);

        // The lowest one goes; the others move down into its place.
        const int lowestBottom = notes.at(0)->geometry().bottom();
        QPointer<MessageWidget> second = notes.at(1);
        notes.at(0)->close();
        QTRY_COMPARE(page.findChildren<MessageWidget*>().size(), 2);
        QVERIFY(second);
        QCOMPARE(second->geometry().bottom(), lowestBottom);
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

    void clickingANoteClosesIt()
    {
        QWidget page;
        QPointer<MessageWidget> note = new MessageWidget(QStringLiteral("Готово"), MessageWidget::Information, &page);
        page.show();
        note->popup();
        QTest::mouseClick(note, Qt::LeftButton);
        QTRY_VERIFY(note.isNull());
    }

    void defaultDurationFitsTheTextAndEnds()
    {
        const int glance = MessageWidget::defaultDuration(QStringLiteral("Ок"));
        const int sentence = MessageWidget::defaultDuration(QStringLiteral("Заявка № 12 подтверждена и отправлена"));
        const int essay = MessageWidget::defaultDuration(QString(5000, QLatin1Char('x')));
        QVERIFY(glance >= 2000);
        QVERIFY(sentence > glance);
        QVERIFY(essay >= sentence);
        QVERIFY(essay <= 30000);
    }

    void pageGoesWithNotesStillShown()
    {
        auto page = std::make_unique<PluginWidget>();
        page->show();
        page->showPopupInformationMessage(QStringLiteral("первая"), 0);
        page->showPopupCriticalMessage(QStringLiteral("вторая"), 0);
        page.reset();  // must neither crash nor touch the gone page
    }
};

QTEST_MAIN(TestPluginWidget)
#include "tst_pluginwidget.moc"
