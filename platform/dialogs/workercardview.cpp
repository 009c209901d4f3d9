#include "workercardview.h"

#include "constants.h"
#include "platformlogging.h"
#include "ui_workercardview.h"
#include "vdglobals.h"

#include <QRegularExpressionValidator>

#include <algorithm>

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
    // Nineteen digits always fit the number of a card.
    ui->cardNumberEdit->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("\\d{1,19}")), ui->cardNumberEdit));

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
    const int index = ui->deviceCombo->findData(device.uid);
    if (index >= 0)
        ui->deviceCombo->setItemText(index, name);
    else
        ui->deviceCombo->addItem(name, device.uid);
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
    if (worker.uid == 0 || (m_added.isEmpty() && m_removed.isEmpty()))
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
    emit appendTask(task);

    // Handed on: from here they count as saved, and a second save doesn't send them again.
    setCards(cards());
}

void WorkerCardView::cardRead(const vorandel::ObjectInfo& card)
{
    if (!m_reading) {
        qCDebug(lcWidgets) << "card read while none was asked for, dropped";
        return;
    }
    finishReading();
    addCard(card);
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

void WorkerCardView::addCard(vorandel::ObjectInfo card)
{
    const vorandel::CARD_ID number = ot_card::number(card);
    if (number == 0) {
        emit showCriticalMessage(tr("У карты нет номера"));
        return;
    }
    if (indexOfCard(cards(), card) >= 0) {
        emit showCriticalMessage(tr("Карта %1 уже есть в списке").arg(number));
        return;
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
}

void WorkerCardView::addTypedCard()
{
    if (!ui->addCardButton->isEnabled())
        return;
    vorandel::ObjectInfo card;
    card.type = db::misc::CARD;
    card.parameters.insert(db::card::NUMBER, ui->cardNumberEdit->text());
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
    ui->addCardButton->setEnabled(cardsEditable && ui->cardNumberEdit->hasAcceptableInput());
    ui->removeCardButton->setEnabled(cardsEditable && ui->cardList->currentRow() >= 0);

    ui->pinEdit->setReadOnly(!(editable && m_changePinEnabled));
    if (!m_showPinEnabled)
        ui->showPinButton->setChecked(false);
    ui->showPinButton->setEnabled(m_showPinEnabled);

    ui->fingerprintsButton->setEnabled(editable);
    ui->scanButton->setEnabled(editable && m_scanEnabled);
}
