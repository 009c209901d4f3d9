#include "searchwidget.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QKeyEvent>
#include <QLineEdit>
#include <QShortcut>
#include <QTimer>
#include <QToolButton>

namespace {
// Long enough to let a name be typed out, short enough to feel immediate.
constexpr int TypingPauseMsecs = 300;
}  // namespace

SearchWidget::SearchWidget(QWidget* parent)
    : QWidget(parent), m_edit(new QLineEdit(this)), m_advanced(new QToolButton(this)), m_delay(new QTimer(this))
{
    m_edit->setClearButtonEnabled(true);
    if (QIcon::hasThemeIcon(QStringLiteral("action-search")))
        m_edit->addAction(QIcon::fromTheme(QStringLiteral("action-search")), QLineEdit::LeadingPosition);
    setFocusProxy(m_edit);

    m_advanced->setAutoRaise(true);
    m_advanced->setIcon(QIcon::fromTheme(QStringLiteral("action-config")));
    m_advanced->setToolTip(tr("Расширенный поиск"));
    if (m_advanced->icon().isNull())
        m_advanced->setText(QStringLiteral("…"));

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(m_edit, 1);
    layout->addWidget(m_advanced);

    m_delay->setSingleShot(true);
    m_delay->setInterval(TypingPauseMsecs);
    connect(m_delay, &QTimer::timeout, this, [this] { emit startSearch(text()); });

    // Edits by the operator only: the clear button counts as one, a setText by the owner doesn't.
    connect(m_edit, &QLineEdit::textEdited, this, [this](const QString& text) {
        if (text.isEmpty()) {
            m_delay->stop();
            emit startSearch(text);
        } else {
            m_delay->start();
        }
    });
    connect(m_edit, &QLineEdit::returnPressed, this, [this] {
        m_delay->stop();
        emit startSearch(text());
    });
    connect(m_advanced, &QToolButton::clicked, this, &SearchWidget::advancedSearchRequested);

    // Ctrl+F from anywhere in the window puts the cursor here, the text selected for retyping;
    // Escape in the field ends the search.
    auto* find = new QShortcut(QKeySequence::Find, this);
    find->setContext(Qt::WindowShortcut);
    connect(find, &QShortcut::activated, this, [this] {
        m_edit->setFocus(Qt::ShortcutFocusReason);
        m_edit->selectAll();
    });
    m_edit->installEventFilter(this);
}

bool SearchWidget::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_edit && event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape && !m_edit->text().isEmpty()) {
        m_delay->stop();
        m_edit->clear();
        emit startSearch(QString());
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

SearchWidget::~SearchWidget() = default;

void SearchWidget::setPlaceholderText(const QString& text)
{
    m_edit->setPlaceholderText(text);
    m_edit->setToolTip(text);
}

QString SearchWidget::placeholderText() const
{
    return m_edit->placeholderText();
}

void SearchWidget::showAdvancedButton(bool show)
{
    m_advanced->setVisible(show);
}

QString SearchWidget::text() const
{
    return m_edit->text();
}

void SearchWidget::setText(const QString& text)
{
    m_delay->stop();
    m_edit->setText(text);
}

QLineEdit* SearchWidget::lineEdit() const
{
    return m_edit;
}
