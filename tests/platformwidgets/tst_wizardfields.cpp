#include "emptytextvalidator.h"
#include "parameterizededit.h"
#include "photowidget.h"
#include "promptmenuedit.h"
#include "promptmenueditcontentsfactory.h"

#include <QListView>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QToolButton>
#include <QVBoxLayout>
#include <QtTest>

namespace {
// Entries named by the test; counts the pictures it is asked for.
class Factory : public PromptMenuEditContentsFactory
{
public:
    explicit Factory(QHash<unsigned int, QString> names, int* pictures) : m_names(std::move(names)), m_pictures(pictures) {}
    QString text(unsigned int uid) const override { return QStringLiteral("<b>%1</b><br>т.н. %2").arg(m_names.value(uid)).arg(uid); }
    QPixmap pixmap(unsigned int) const override
    {
        ++*m_pictures;
        QPixmap picture(64, 80);
        picture.fill(Qt::gray);
        return picture;
    }

private:
    QHash<unsigned int, QString> m_names;
    int* m_pictures;
};

// A window with the edit and a second field to leave it for.
struct SearchForm
{
    SearchForm()
    {
        auto* layout = new QVBoxLayout(&window);
        edit = new PromptMenuEdit(&window);
        other = new QLineEdit(&window);
        layout->addWidget(edit);
        layout->addWidget(other);
        QHash<unsigned int, QString> names{{1, QStringLiteral("Иванов Пётр")}, {2, QStringLiteral("Иванова Анна")},
                                          {3, QStringLiteral("Ивашкин Олег")}, {4, QStringLiteral("Петров Иван")}};
        for (auto it = names.cbegin(); it != names.cend(); ++it)
            trie.addByWords(it.value().toLower(), it.key());
        edit->setSearcher(&trie);
        edit->setMenuFactory(new Factory(names, &pictures));
        window.resize(400, 120);
        window.show();
        window.activateWindow();
        edit->setFocus();
    }
    // QTest types ASCII only; the operator types Cyrillic.
    void type(const QString& text)
    {
        for (const QChar c : text) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
            QApplication::sendEvent(edit, &press);
        }
    }

    QWidget window;
    PromptMenuEdit* edit = nullptr;
    QLineEdit* other = nullptr;
    TrieStatic<unsigned int> trie;
    int pictures = 0;
};
}  // namespace

class TestWizardFields : public QObject
{
    Q_OBJECT

private slots:
    // The list follows the typing, in the order of the entries' texts. Keys move through the hits
    // and choose, as does a click; Escape, leaving the field or the program filling it close the
    // list, and only a choice is announced.
    void hitsFollowTheTypingAndAreChosen()
    {
        SearchForm form;
        QVERIFY(QTest::qWaitForWindowExposed(&form.window));
        QSignalSpy found(form.edit, &PromptMenuEdit::found);
        form.type(QStringLiteral("ив"));
        QVERIFY(form.edit->isMenuVisible());
        QCOMPARE(form.edit->hits(), (QList<unsigned int>{1, 2, 3, 4}));  // "Иванов" before "Иванова": by text
        QCOMPARE(form.edit->currentHit(), 1u);
        QTest::keyClick(form.edit, Qt::Key_Down);
        QTest::keyClick(form.edit, Qt::Key_Down);
        QTest::keyClick(form.edit, Qt::Key_Down);
        QTest::keyClick(form.edit, Qt::Key_Down);  // stops at the last
        QTest::keyClick(form.edit, Qt::Key_Up);
        QCOMPARE(form.edit->currentHit(), 3u);
        QTest::keyClick(form.edit, Qt::Key_Return);
        QVERIFY(!form.edit->isMenuVisible());
        QCOMPARE(found.count(), 1);
        QCOMPARE(found.takeFirst().at(0).toUInt(), 3u);
        QCOMPARE(form.edit->text(), QStringLiteral("ив"));  // what to fill in is the receiver's business

        form.type(QStringLiteral("аш"));
        QCOMPARE(form.edit->hits(), QList<unsigned int>{3});
        form.type(QStringLiteral("ю"));
        QVERIFY(!form.edit->isMenuVisible());
        form.edit->setText(QStringLiteral("ива"));
        QVERIFY(!form.edit->isMenuVisible());

        form.type(QStringLiteral("н"));
        QVERIFY(form.edit->isMenuVisible());
        QTest::keyClick(form.edit, Qt::Key_Escape);
        QVERIFY(!form.edit->isMenuVisible());

        form.type(QStringLiteral("о"));
        QCOMPARE(form.edit->hits(), (QList<unsigned int>{1, 2}));
        QListView* menu = form.edit->menu();
        const QRect second = menu->visualRect(menu->model()->index(1, 0));
        QTest::mouseClick(menu->viewport(), Qt::LeftButton, {}, second.center());
        QCOMPARE(found.count(), 1);
        QCOMPARE(found.takeFirst().at(0).toUInt(), 2u);
        QVERIFY(!form.edit->isMenuVisible());
        QVERIFY(form.edit->hasFocus() || !form.window.isActiveWindow());

        form.edit->selectAll();
        form.type(QStringLiteral("п"));
        QVERIFY(form.edit->isMenuVisible());
        form.other->setFocus();
        QTRY_VERIFY(!form.edit->isMenuVisible());
    }

    // Hundreds of hits: pictures are made only for the entries that come into view.
    void manyHitsDrawOnlyWhatShows()
    {
        SearchForm form;
        QVERIFY(QTest::qWaitForWindowExposed(&form.window));
        QHash<unsigned int, QString> names;
        for (unsigned int uid = 100; uid < 700; ++uid) {
            names.insert(uid, QStringLiteral("Смирнов %1").arg(uid));
            form.trie.addByWords(names.value(uid).toLower(), uid);
        }
        form.edit->setMenuFactory(new Factory(names, &form.pictures));
        form.edit->setVisibleHits(8);
        form.type(QStringLiteral("с"));
        QCoreApplication::processEvents();
        QCOMPARE(form.edit->hits().size(), 600);
        QVERIFY2(form.pictures <= 20, qPrintable(QString::number(form.pictures)));
        QTest::keyClick(form.edit, Qt::Key_PageDown);
        QTest::keyClick(form.edit, Qt::Key_PageDown);
        QCOMPARE(form.edit->currentHit(), form.edit->hits().at(14));
        QVERIFY(form.edit->menu()->visualRect(form.edit->menu()->currentIndex()).intersects(form.edit->menu()->viewport()->rect()));
    }

    // Set up as the worker's surname is: marked while the text is empty or blank, and only while
    // the field is enabled; the mark goes as soon as the text will do.
    void parameterizedEditMarksItself()
    {
        ParameterizedEdit edit;
        const QColor base = edit.palette().color(QPalette::Base);
        edit.setValidator(new EmptyTextValidator(&edit));
        edit.setEmptyTextAllowed(false);
        QVERIFY(!edit.isMarked());
        edit.highlightValidation(true);
        QVERIFY(edit.isMarked());
        QVERIFY(edit.palette().color(QPalette::Base) != base);
        edit.setText(QStringLiteral("   "));
        QVERIFY(edit.isMarked());
        QVERIFY(!edit.isTextValid());
        edit.setEnabled(false);
        QVERIFY(!edit.isMarked());
        edit.setEnabled(true);
        edit.setText(QStringLiteral("Петров"));
        QVERIFY(!edit.isMarked());
        QCOMPARE(edit.palette().color(QPalette::Base), base);
    }

    // A file that holds no picture is refused and leaves the photo there is; clearing brings back
    // the placeholder, which is no photo.
    void photoRefusesABadFileAndClears()
    {
        QTemporaryDir dir;
        const QString bad = dir.filePath(QStringLiteral("notes.png"));
        QFile text(bad);
        QVERIFY(text.open(QIODevice::WriteOnly));
        text.write("not a picture");
        text.close();

        PhotoWidget photo;
        const QPixmap placeholder(QStringLiteral(":/accessctl/no_photo"));
        photo.setDefaultPixmap(placeholder);
        auto* clear = photo.findChild<QToolButton*>(QStringLiteral("clearButton"));
        QVERIFY(!clear->isEnabled());
        QVERIFY(!photo.loadFromFile(bad));
        QVERIFY(!photo.isPhotoSet());
        QImage picture(60, 80, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        photo.setPixmap(QPixmap::fromImage(picture));
        QVERIFY(clear->isEnabled());
        QSignalSpy changed(&photo, &PhotoWidget::photoChanged);
        QVERIFY(!photo.loadFromFile(bad));
        QVERIFY(photo.isPhotoSet());
        QCOMPARE(changed.count(), 0);
        clear->click();
        QVERIFY(!photo.isPhotoSet());
        QCOMPARE(changed.count(), 1);
        QCOMPARE(photo.pixmap().size(), placeholder.size());
    }
};

QTEST_MAIN(TestWizardFields)
#include "tst_wizardfields.moc"
