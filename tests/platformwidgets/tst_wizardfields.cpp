#include "emptytextvalidator.h"
#include "parameterizededit.h"
#include "photowidget.h"
#include "promptmenuedit.h"
#include "promptmenueditcontentsfactory.h"
#include "styleditemdelegate.h"

#include <QElapsedTimer>
#include <QListView>
#include <QSignalSpy>
#include <QStandardItemModel>
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
    // The list follows the typing, in the order of the entries' texts, under the field.
    void hitsFollowTheTyping()
    {
        SearchForm form;
        QVERIFY(QTest::qWaitForWindowExposed(&form.window));
        form.type(QStringLiteral("и"));
        QVERIFY(form.edit->isMenuVisible());
        QCOMPARE(form.edit->hits(), (QList<unsigned int>{1, 2, 3, 4}));  // "Иванов" before "Иванова": by text
        const QRect menu = form.edit->menu()->geometry();
        QCOMPARE(menu.topLeft(), form.edit->mapToGlobal(QPoint(0, form.edit->height())));
        QVERIFY(menu.width() >= form.edit->width());
        form.type(QStringLiteral("ваш"));
        QCOMPARE(form.edit->hits(), QList<unsigned int>{3});
        form.type(QStringLiteral("ю"));
        QVERIFY(!form.edit->isMenuVisible());
        form.edit->setText(QStringLiteral("Петров"));  // the program filling the field
        QVERIFY(!form.edit->isMenuVisible());
    }

    // Keys move through the hits and choose; Escape and leaving the field close the list.
    void keyboardAndMouseChoose()
    {
        SearchForm form;
        QVERIFY(QTest::qWaitForWindowExposed(&form.window));
        QSignalSpy found(form.edit, &PromptMenuEdit::found);
        form.type(QStringLiteral("ив"));
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

        form.type(QStringLiteral("а"));
        QTest::keyClick(form.edit, Qt::Key_Escape);
        QVERIFY(!form.edit->isMenuVisible());
        QCOMPARE(found.count(), 0);

        form.type(QStringLiteral("н"));
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

    // Hundreds of hits: one keystroke stays quick, and pictures are made only for the entries
    // that come into view.
    void manyHitsStayQuick()
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
        QElapsedTimer clock;
        clock.start();
        form.type(QStringLiteral("с"));
        QCoreApplication::processEvents();
        QVERIFY2(clock.elapsed() < 500, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(form.edit->hits().size(), 600);
        QVERIFY2(form.pictures <= 20, qPrintable(QString::number(form.pictures)));
        QTest::keyClick(form.edit, Qt::Key_PageDown);
        QTest::keyClick(form.edit, Qt::Key_PageDown);
        QCOMPARE(form.edit->currentHit(), form.edit->hits().at(14));
        QVERIFY(form.edit->menu()->visualRect(form.edit->menu()->currentIndex()).intersects(form.edit->menu()->viewport()->rect()));
    }

    // Marked while the text isn't acceptable, and only with highlighting on and the field enabled.
    void parameterizedEditMarksItself_data()
    {
        QTest::addColumn<bool>("emptyAllowed");
        QTest::addColumn<bool>("validator");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("marked");
        QTest::newRow("empty refused") << false << false << "" << true;
        QTest::newRow("empty allowed") << true << false << "" << false;
        QTest::newRow("blanks, validator") << true << true << "   " << true;
        QTest::newRow("text, validator") << false << true << "Иванов" << false;
    }
    void parameterizedEditMarksItself()
    {
        QFETCH(bool, emptyAllowed);
        QFETCH(bool, validator);
        QFETCH(QString, text);
        QFETCH(bool, marked);
        ParameterizedEdit edit;
        const QColor base = edit.palette().color(QPalette::Base);
        if (validator)
            edit.setValidator(new EmptyTextValidator(&edit));
        edit.setEmptyTextAllowed(emptyAllowed);
        edit.setText(text);
        QVERIFY(!edit.isMarked());
        edit.highlightValidation(true);
        QCOMPARE(edit.isMarked(), marked);
        QCOMPARE(edit.isTextValid(), !marked);
        QCOMPARE(edit.palette().color(QPalette::Base) != base, marked);
        edit.setEnabled(false);
        QVERIFY(!edit.isMarked());
        edit.setEnabled(true);
        edit.setText(QStringLiteral("Петров"));
        QVERIFY(!edit.isMarked());
        QCOMPARE(edit.palette().color(QPalette::Base), base);
    }

    void photoIsLoadedFromAFile()
    {
        QTemporaryDir dir;
        QImage picture(60, 80, QImage::Format_RGB32);
        picture.fill(Qt::darkCyan);
        const QString good = dir.filePath(QStringLiteral("photo.png"));
        QVERIFY(picture.save(good));
        const QString bad = dir.filePath(QStringLiteral("notes.png"));
        QFile text(bad);
        QVERIFY(text.open(QIODevice::WriteOnly));
        text.write("not a picture");
        text.close();

        PhotoWidget photo;
        const QPixmap placeholder(QStringLiteral(":/accessctl/no_photo"));
        photo.setDefaultPixmap(placeholder);
        QSignalSpy changed(&photo, &PhotoWidget::photoChanged);
        QVERIFY(!photo.isPhotoSet());
        QCOMPARE(photo.pixmap().size(), placeholder.size());
        auto* clear = photo.findChild<QToolButton*>(QStringLiteral("clearButton"));
        QVERIFY(!clear->isEnabled());

        QVERIFY(!photo.loadFromFile(bad));
        QVERIFY(!photo.loadFromFile(dir.filePath(QStringLiteral("missing.jpg"))));
        QVERIFY(!photo.isPhotoSet());
        QCOMPARE(changed.count(), 0);
        QVERIFY(photo.loadFromFile(good));
        QVERIFY(photo.isPhotoSet());
        QCOMPARE(photo.pixmap().toImage().pixelColor(5, 5), QColor(Qt::darkCyan));
        QVERIFY(clear->isEnabled());
        QCOMPARE(changed.count(), 1);
        QVERIFY(!photo.loadFromFile(bad));  // a bad file keeps the photo there is
        QVERIFY(photo.isPhotoSet());
        clear->click();
        QVERIFY(!photo.isPhotoSet());
        QCOMPARE(photo.pixmap().size(), placeholder.size());
    }

    // The pictures of the photo field are drawn, and must load wherever the platform runs.
    void placeholderPicturesLoad_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("no photo") << ":/accessctl/no_photo";
        QTest::newRow("photos not kept") << ":/accessctl/fz152";
    }
    void placeholderPicturesLoad()
    {
        QFETCH(QString, path);
        const QPixmap picture(path);
        QVERIFY2(!picture.isNull(), "the SVG image plug-in is missing");
        QVERIFY(picture.height() > picture.width());
    }

    void styledItemDelegateShowsItsName()
    {
        struct Upper : StyledItemDelegate
        {
            QString name(const QModelIndex& index) const override { return index.data().toString().toUpper(); }
        } delegate;
        QStandardItemModel model;
        model.appendRow(new QStandardItem(QStringLiteral("заявка")));
        QStyleOptionViewItem option;
        QListView view;
        option.initFrom(&view);
        const QSize plain = StyledItemDelegate().sizeHint(option, model.index(0, 0));
        QCOMPARE(StyledItemDelegate().name(model.index(0, 0)), QStringLiteral("заявка"));
        QCOMPARE(delegate.name(model.index(0, 0)), QStringLiteral("ЗАЯВКА"));
        QVERIFY(delegate.sizeHint(option, model.index(0, 0)).width() > plain.width());  // measured by the name
    }
};

QTEST_MAIN(TestWizardFields)
#include "tst_wizardfields.moc"
