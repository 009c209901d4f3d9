#include "workercardview.h"

#include "constants.h"
#include "localstorage.h"
#include "platformlogging.h"
#include "ui_workercardview.h"
#include "vdglobals.h"

#include <QCollator>
#include <QRegularExpressionValidator>

#include <algorithm>
#include <utility>

namespace {
const QString PinKey = QStringLiteral("PT_PINCODE");
// The name under which the view holds the dialog's save back while a reader is busy.
const QString SavePart = QStringLiteral("cards");

const QString FingersCount = QStringLiteral("fingers_count");
const QString PalmCount = QStringLiteral("palm_count");
const QString AirPalmCount = QStringLiteral("airpalm_count");
const QString FaceCount = QStringLiteral("face_count");

// Counts templates by kind: fingers 0 to 9, palms and contactless palms 100 and 101 told apart
// by their kind (2 and 3), faces 200 and 201.
QVariantMap countTemplates(const QList<vorandel::TEMPLATE_DATA>& templates)
{
    int fingers = 0, palms = 0, airPalms = 0, faces = 0;
    for (const vorandel::TEMPLATE_DATA& data : templates) {
        if (data.index >= 0 && data.index <= 9)
            ++fingers;
        else if ((data.index == 100 || data.index == 101) && data.kind == 2)
            ++palms;
        else if ((data.index == 100 || data.index == 101) && data.kind == 3)
            ++airPalms;
        else if (data.index == 200 || data.index == 201)
            ++faces;
    }
    return {{FingersCount, fingers}, {PalmCount, palms}, {AirPalmCount, airPalms}, {FaceCount, faces}};
}

bool sameCard(const vorandel::ObjectInfo& a, const vorandel::ObjectInfo& b)
{
    return ot_card::number(a) == ot_card::number(b);
}

int indexOfCard(const QList<vorandel::ObjectInfo>& cards, const vorandel::ObjectInfo& card)
{
    const auto it = std::find_if(cards.cbegin(), cards.cend(),
                                 [&card](const vorandel::ObjectInfo& other) { return sameCard(card, other); });
    return it == cards.cend() ? -1 : int(it - cards.cbegin());
}

void removeCard(QList<vorandel::ObjectInfo>& cards, const vorandel::ObjectInfo& card)
{
    const int index = indexOfCard(cards, card);
    if (index >= 0)
        cards.removeAt(index);
}
}  // namespace

WorkerCardView::WorkerCardView(QWidget* parent)
    : PropertyBaseWidget(parent), ui(std::make_unique<Ui::WorkerCardView>())
{
    // What the signals and slots carry, for owners that connect them queued.
    qRegisterMetaType<vorandel::TaskInfo>("vorandel::TaskInfo");
    qRegisterMetaType<vorandel::ObjectInfo>("vorandel::ObjectInfo");
    qRegisterMetaType<vorandel::EMAIL_MESSAGE>("vorandel::EMAIL_MESSAGE");
    qRegisterMetaType<QList<vorandel::TEMPLATE_DATA>>("QList<vorandel::TEMPLATE_DATA>");

    ui->setupUi(this);
    ui->cardsPage->setWindowIcon(QIcon::fromTheme(QStringLiteral("object-OT_CARD")));
    ui->biometricsPage->setWindowIcon(QIcon::fromTheme(QStringLiteral("common-fingerprint")));
    ui->pinEdit->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{0,8}")), ui->pinEdit));
    // Whatever is typed is checked on adding, so that a wrong number gets a reason, not silence.
    ui->cardNumberEdit->setMaxLength(32);

    connect(ui->pinEdit, &QLineEdit::textEdited, this, &PropertyBaseWidget::dataEdited);
    connect(ui->showPinButton, &QToolButton::toggled, this, [this](bool shown) {
        ui->pinEdit->setEchoMode(shown ? QLineEdit::Normal : QLineEdit::Password);
    });
    connect(ui->cardList, &QListWidget::currentRowChanged, this, &WorkerCardView::updateControls);
    connect(ui->cardNumberEdit, &QLineEdit::textChanged, this, &WorkerCardView::updateControls);
    connect(ui->cardNumberEdit, &QLineEdit::returnPressed, this, &WorkerCardView::addTypedCard);
    connect(ui->addCardButton, &QPushButton::clicked, this, &WorkerCardView::addTypedCard);
    connect(ui->removeCardButton, &QPushButton::clicked, this, &WorkerCardView::removeSelectedCard);
    connect(ui->readCardButton, &QPushButton::clicked, this, &WorkerCardView::readOrCancel);
    connect(ui->fingerprintsButton, &QPushButton::clicked, this, [this] { emit getFingerprints(currentObject().uid); });
    connect(ui->scanButton, &QPushButton::clicked, this, &WorkerCardView::scanBiometrics);
    // Once a dialog has taken every page away, the empty stack takes no room.
    connect(ui->pages, &QStackedWidget::widgetRemoved, this, [this] { ui->pages->setVisible(ui->pages->count() > 0); });

    showCounts({});
    updateControls();
}

WorkerCardView::~WorkerCardView() = default;

void WorkerCardView::addDevice(const vorandel::ObjectInfo& device)
{
    QString name = VDGlobals::objectName(device);
    if (name.isEmpty())
        name = tr("Считыватель № %1").arg(device.uid);
    QComboBox* devices = ui->deviceCombo;
    const int known = devices->findData(device.uid);
    if (known >= 0) {
        devices->setItemText(known, name);
    } else {
        // In the order of their names, whatever the order they come in; the first of them is
        // the one offered.
        const QCollator collator;
        int row = 0;
        while (row < devices->count() && collator.compare(devices->itemText(row), name) <= 0)
            ++row;
        devices->insertItem(row, name, device.uid);
        if (row == 0)
            devices->setCurrentIndex(0);
    }
    updateControls();
}

void WorkerCardView::setCards(const QList<vorandel::ObjectInfo>& cards)
{
    m_cards = cards;
    m_added.clear();
    m_removed.clear();
    showCards();
}

QList<vorandel::ObjectInfo> WorkerCardView::cards() const
{
    QList<vorandel::ObjectInfo> shown;
    for (const vorandel::ObjectInfo& card : m_cards) {
        if (indexOfCard(m_removed, card) < 0)
            shown.append(card);
    }
    return shown + m_added;
}

void WorkerCardView::setShowPinEnabled(bool enabled)
{
    m_showPinEnabled = enabled;
    updateControls();
}

void WorkerCardView::setChangeCardEnabled(bool enabled)
{
    m_changeCardEnabled = enabled;
    updateControls();
}

void WorkerCardView::setChangePinCodeEnabled(bool enabled)
{
    m_changePinEnabled = enabled;
    updateControls();
}

void WorkerCardView::setScanBiometricsEnabled(bool enabled)
{
    m_scanEnabled = enabled;
    updateControls();
}

QList<QWidget*> WorkerCardView::subPages() const
{
    return {ui->cardsPage, ui->biometricsPage};
}

void WorkerCardView::showBlock(int block, bool visible)
{
    switch (block) {
    case PinBlock:
        ui->pinBox->setVisible(visible);
        return;
    case PagesBlock:
        ui->pages->setVisible(visible);
        return;
    }
    qCWarning(lcWidgets) << "no block" << block << "in the card view";
}

void WorkerCardView::showSubPage(int index)
{
    const QList<QWidget*> pages = subPages();
    if (index < 0 || index >= pages.size()) {
        qCWarning(lcWidgets) << "no sub page" << index << "in the card view";
        return;
    }
    // The page is in the view's own stack or in the tabs of a dialog that took it.
    QWidget* page = pages.at(index);
    auto* stack = qobject_cast<QStackedWidget*>(page->parentWidget());
    if (!stack)
        return;
    if (auto* tabs = qobject_cast<QTabWidget*>(stack->parentWidget()))
        tabs->setCurrentWidget(page);
    else
        stack->setCurrentWidget(page);
}

void WorkerCardView::setReadOnly(bool readOnly)
{
    PropertyBaseWidget::setReadOnly(readOnly);
    updateControls();
}

void WorkerCardView::setCurrent(const vorandel::OBJECT_HASH& objects)
{
    const vorandel::TYPE_ID before = currentObject().uid;
    PropertyBaseWidget::setCurrent(objects);
    if (currentObject().uid != before) {
        if (m_reading)
            finishReading();
        setCards({});
        showCounts({});
    }
    ui->pinEdit->setText(currentObject().parameters.value(PinKey));
    updateControls();
}

QHash<QString, QString> WorkerCardView::editedProperties() const
{
    const vorandel::ObjectInfo& worker = currentObject();
    if (!worker.isValid() || ui->pinEdit->text() == worker.parameters.value(PinKey))
        return {};
    return {{PinKey, ui->pinEdit->text()}};
}

void WorkerCardView::applyChanges()
{
    const vorandel::ObjectInfo& worker = currentObject();
    // A save whose answer hasn't come yet has handed these on already.
    if (worker.uid == 0 || m_sending.active || (m_added.isEmpty() && m_removed.isEmpty()))
        return;
    vorandel::TaskInfo task;
    task.uid = worker.uid;
    task.type = QStringLiteral("update_worker_cards");
    for (const vorandel::ObjectInfo& card : qAsConst(m_added))
        task.params.insert(QStringLiteral("add"), card.toByteArray());
    for (const vorandel::ObjectInfo& card : qAsConst(m_removed))
        task.params.insert(QStringLiteral("delete"), card.toByteArray());
    const QString name = VDGlobals::objectName(worker);
    task.message = tr("Карты сотрудника %1 сохранены").arg(name);
    task.errorMessage = tr("Ошибка сохранения карт сотрудника %1").arg(name);
    task.receiver = this;
    task.slot = QStringLiteral("cardsSaved");
    m_sending = {true, m_added, m_removed};
    emit appendTask(task);
}

void WorkerCardView::rejectChanges()
{
    PropertyBaseWidget::rejectChanges();
    m_added.clear();
    m_removed.clear();
    showCards();
}

void WorkerCardView::cardsSaved(vorandel::TYPE_ID uid, const QString& error)
{
    const Sending sent = std::exchange(m_sending, {});
    if (uid == 0) {
        // What was handed on stays pending, to be saved again.
        emit showCriticalMessage(error.isEmpty() ? tr("Карты не сохранены") : error);
        return;
    }
    for (const vorandel::ObjectInfo& card : sent.added) {
        removeCard(m_added, card);
        m_cards.append(card);
    }
    for (const vorandel::ObjectInfo& card : sent.removed) {
        removeCard(m_removed, card);
        removeCard(m_cards, card);
    }
    showCards();
    emit showMessage(tr("Карты сохранены"));
}

void WorkerCardView::cardRead(const vorandel::ObjectInfo& card)
{
    if (!m_reading) {
        qCDebug(lcWidgets) << "card read while none was asked for, dropped";
        return;
    }
    finishReading();
    if (addCard(card))
        emit showMessage(tr("Считана карта %1: она будет выдана при сохранении").arg(ot_card::number(card)));
}

void WorkerCardView::cardReadFailed()
{
    if (!m_reading)
        return;
    finishReading();
    emit showCriticalMessage(tr("Не удалось считать карту"));
}

void WorkerCardView::setWorkerFingers(vorandel::TYPE_ID worker, const QVariantMap& templatesCount)
{
    if (worker != 0 && worker == currentObject().uid)
        showCounts(templatesCount);
}

void WorkerCardView::biometricsScanned(vorandel::TYPE_ID worker, const QList<vorandel::TEMPLATE_DATA>& fingers)
{
    if (worker != 0 && worker == currentObject().uid)
        showCounts(countTemplates(fingers));
}

QString WorkerCardView::refusalFor(const vorandel::ObjectInfo& card) const
{
    const vorandel::CARD_ID number = ot_card::number(card);
    if (number == 0)
        return tr("У карты нет номера");
    if (indexOfCard(cards(), card) >= 0)
        return tr("Карта %1 уже есть в списке").arg(number);
    const vorandel::LocalStorage* store = vorandel::LocalStorage::instance();
    const vorandel::TYPE_ID holder = ot_card::uid(store->card(number, true));
    if (holder != 0 && holder != currentObject().uid) {
        const QString name = VDGlobals::objectName(store->constObject(holder, vorandel::SUBJECT_DATANAME));
        return tr("Карта %1 уже выдана сотруднику %2").arg(number).arg(name.isEmpty() ? QString::number(holder) : name);
    }
    return {};
}

bool WorkerCardView::addCard(vorandel::ObjectInfo card)
{
    const QString refusal = refusalFor(card);
    if (!refusal.isEmpty()) {
        emit showCriticalMessage(refusal);
        return false;
    }
    const int removed = indexOfCard(m_removed, card);
    if (removed >= 0) {
        m_removed.removeAt(removed);
    } else {
        if (card.type.isEmpty())
            card.type = db::misc::CARD;
        card.parameters.insert(db::card::OWNER, QString::number(currentObject().uid));
        m_added.append(card);
    }
    showCards();
    emit dataEdited();
    return true;
}

void WorkerCardView::addTypedCard()
{
    if (!ui->addCardButton->isEnabled())
        return;
    const QString text = ui->cardNumberEdit->text().trimmed();
    bool number = false;
    const vorandel::CARD_ID value = text.toULongLong(&number);
    // Digits only: toULongLong() would also take a sign or blanks.
    static const QRegularExpression Digits(QStringLiteral("^\\d+$"));
    if (!number || value == 0 || !Digits.match(text).hasMatch()) {
        emit showCriticalMessage(tr("«%1» не номер карты: номер состоит из цифр и не равен нулю").arg(text));
        return;
    }
    vorandel::ObjectInfo card;
    card.type = db::misc::CARD;
    card.parameters.insert(db::card::NUMBER, QString::number(value));
    const QString refusal = refusalFor(card);
    if (!refusal.isEmpty()) {
        // The number stays in the field, to be corrected.
        emit showCriticalMessage(refusal);
        return;
    }
    ui->cardNumberEdit->clear();
    addCard(card);
}

void WorkerCardView::removeSelectedCard()
{
    const QList<vorandel::ObjectInfo> shown = cards();
    const int row = ui->cardList->currentRow();
    if (row < 0 || row >= shown.size())
        return;
    const vorandel::ObjectInfo& card = shown.at(row);
    const int added = indexOfCard(m_added, card);
    if (added >= 0)
        m_added.removeAt(added);
    else
        m_removed.append(card);
    showCards();
    emit dataEdited();
}

void WorkerCardView::readOrCancel()
{
    if (m_reading) {
        finishReading();
        emit showMessage(tr("Чтение карты отменено"));
        return;
    }
    const vorandel::TYPE_ID device = ui->deviceCombo->currentData().toUInt();
    if (device == 0)
        return;
    m_reading = true;
    emit setSaveEnabled(SavePart, false);
    emit showMessage(tr("Поднесите карту к считывателю «%1»").arg(ui->deviceCombo->currentText()));
    updateControls();
    // Last: the answer may come back before this returns.
    emit readCard(device);
}

void WorkerCardView::finishReading()
{
    m_reading = false;
    emit setSaveEnabled(SavePart, true);
    updateControls();
}

void WorkerCardView::scanBiometrics()
{
    const vorandel::ObjectInfo& worker = currentObject();
    vorandel::TaskInfo task;
    task.uid = worker.uid;
    task.type = QStringLiteral("scan_biometrics");
    const QString name = VDGlobals::objectName(worker);
    task.message = tr("Биометрия сотрудника %1 отсканирована").arg(name);
    task.errorMessage = tr("Ошибка сканирования биометрии сотрудника %1").arg(name);
    emit appendTask(task);
}

void WorkerCardView::showCards()
{
    ui->cardList->clear();
    const QList<vorandel::ObjectInfo> shown = cards();
    for (const vorandel::ObjectInfo& card : shown) {
        auto* item = new QListWidgetItem(QString::number(ot_card::number(card)), ui->cardList);
        if (indexOfCard(m_added, card) >= 0) {
            QFont font = item->font();
            font.setItalic(true);
            item->setFont(font);
            item->setToolTip(tr("Будет добавлена при сохранении"));
        }
    }
    updateControls();
}

void WorkerCardView::showCounts(const QVariantMap& counts)
{
    const auto show = [&counts](QLabel* label, const QString& key) {
        label->setText(counts.contains(key) ? QString::number(counts.value(key).toInt()) : QStringLiteral("—"));
    };
    show(ui->fingersCount, FingersCount);
    show(ui->palmCount, PalmCount);
    show(ui->airpalmCount, AirPalmCount);
    show(ui->faceCount, FaceCount);
}

void WorkerCardView::updateControls()
{
    const bool worker = currentObject().uid != 0;
    const bool editable = worker && !m_readOnly;
    const bool cardsEditable = editable && m_changeCardEnabled;

    ui->readCardButton->setText(m_reading ? tr("Отменить") : tr("Считать карту"));
    ui->readCardButton->setEnabled(m_reading || (cardsEditable && ui->deviceCombo->count() > 0));
    ui->deviceCombo->setEnabled(cardsEditable && !m_reading);
    ui->cardNumberEdit->setEnabled(cardsEditable);
    ui->addCardButton->setEnabled(cardsEditable && !ui->cardNumberEdit->text().trimmed().isEmpty());
    ui->removeCardButton->setEnabled(cardsEditable && ui->cardList->currentRow() >= 0);

    ui->pinEdit->setReadOnly(!(editable && m_changePinEnabled));
    if (!m_showPinEnabled)
        ui->showPinButton->setChecked(false);
    ui->showPinButton->setEnabled(m_showPinEnabled);

    ui->fingerprintsButton->setEnabled(editable);
    ui->scanButton->setEnabled(editable && m_scanEnabled);
}
