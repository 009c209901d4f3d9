#include "fingerprintwidget.h"

#include "ui_fingerprintwidget.h"

#include "command.h"
#include "constants.h"
#include "fingerprintlogging.h"
#include "localstorage.h"
#include "vd5sdkdata.h"
#include "vddatastream.h"
#include "vdglobals.h"

#include <QCloseEvent>
#include <QRandomGenerator>

#include <algorithm>
#include <utility>

using vorandel::TEMPLATE_DATA;

namespace {

constexpr qint16 FingerCount = 10;
constexpr qint16 RightIndex = 1;
constexpr qint16 LeftIndex = 6;
constexpr int StepsPerFinger = 20;
const QString Check = QStringLiteral(" ✓");

bool isFinger(const TEMPLATE_DATA& data)
{
    return data.index >= 0 && data.index < FingerCount;
}

// What the scanner makes of a finger: a template of the size and quality a real one has.
TEMPLATE_DATA scanned(qint16 finger)
{
    QRandomGenerator* random = QRandomGenerator::global();
    TEMPLATE_DATA data;
    data.index = finger;
    data.quality = 60 + int(random->bounded(40));
    QByteArray bytes(384, Qt::Uninitialized);
    for (char& byte : bytes)
        byte = char(random->bounded(256));
    data.data = bytes;
    return data;
}

QString failureText(Command& command)
{
    QString text;
    VDDataStream in(command.data);
    in >> text;
    return text;
}

}  // namespace

FingerprintWidget::FingerprintWidget(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::FingerprintWidget>())
{
    ui->setupUi(this);
    for (qint16 finger = 0; finger < FingerCount; ++finger) {
        QCheckBox* box = fingerBox(finger);
        box->setProperty("plainText", box->text());
        connect(box, &QCheckBox::toggled, this, &FingerprintWidget::updateControls);
    }
    connect(&m_scanTimer, &QTimer::timeout, this, &FingerprintWidget::scanStep);
    connect(ui->scanButton, &QPushButton::clicked, this, &FingerprintWidget::scan);
    connect(ui->removeButton, &QPushButton::clicked, this, &FingerprintWidget::removeChosen);
    connect(ui->closeButton, &QPushButton::clicked, this, &QWidget::close);
    updateFingers();
}

FingerprintWidget::~FingerprintWidget() = default;

void FingerprintWidget::setDataService(vd5sdk::Data* data)
{
    m_data = data;
}

QCheckBox* FingerprintWidget::fingerBox(qint16 index) const
{
    return findChild<QCheckBox*>(QStringLiteral("finger%1").arg(index));
}

QList<qint16> FingerprintWidget::chosenFingers() const
{
    QList<qint16> chosen;
    for (qint16 finger = 0; finger < FingerCount; ++finger) {
        if (fingerBox(finger)->isChecked())
            chosen.append(finger);
    }
    return chosen;
}

void FingerprintWidget::chooseFingers(const QList<qint16>& fingers)
{
    for (qint16 finger = 0; finger < FingerCount; ++finger)
        fingerBox(finger)->setChecked(fingers.contains(finger));
}

void FingerprintWidget::setCaller(const QString& caller)
{
    qCDebug(lcFingerprint) << "serves" << caller;
    m_caller = caller;
}

void FingerprintWidget::setUser(vorandel::TYPE_ID uid)
{
    m_scanTimer.stop();
    m_user = uid;
    m_templates.clear();
    m_changed = false;
    m_loading = false;
    m_scanWhenLoaded = false;
    chooseFingers({});
    const vorandel::ObjectInfo& worker =
        vorandel::LocalStorage::instance()->constObject(uid, vorandel::SUBJECT_DATANAME);
    const QString name = worker.isValid() ? VDGlobals::objectName(worker) : tr("сотрудник № %1").arg(uid);
    ui->workerLabel->setText(tr("Сотрудник: %1").arg(name));
    ui->progressBar->setValue(0);
    showStatus(QString());
    updateFingers();
    if (!m_data || uid == 0)
        return;
    m_loading = true;
    const QPointer<FingerprintWidget> self(this);
    m_data->getUserFingers({uid}, [self, uid](Command& command) {
        if (self && self->m_user == uid)
            self->templatesRead(command);
    });
}

void FingerprintWidget::templatesRead(Command& command)
{
    m_loading = false;
    if (std::exchange(m_scanWhenLoaded, false))
        QMetaObject::invokeMethod(this, &FingerprintWidget::scan, Qt::QueuedConnection);
    if (command.status != Command::StatusOk) {
        showStatus(tr("Не удалось получить отпечатки: %1").arg(failureText(command)), true);
        return;
    }
    QMap<unsigned int, TEMPLATE_DATA> map;
    VDDataStream in(command.data);
    in >> map;
    m_templates = map.values(m_user);
    updateFingers();
}

void FingerprintWidget::scan()
{
    if (m_loading) {
        m_scanWhenLoaded = true;
        return;
    }
    if (isScanning() || m_storing || m_user == 0)
        return;
    QList<qint16> fingers = chosenFingers();
    if (fingers.isEmpty()) {
        for (const qint16 finger : {RightIndex, LeftIndex}) {
            const bool held = std::any_of(m_templates.cbegin(), m_templates.cend(),
                                          [finger](const TEMPLATE_DATA& data) { return data.index == finger; });
            if (!held)
                fingers.append(finger);
        }
        chooseFingers(fingers);
    }
    if (fingers.isEmpty()) {
        showStatus(tr("Отметьте пальцы, которые нужно отсканировать"));
        return;
    }
    m_toScan = fingers;
    m_scanned.clear();
    m_stepsDone = 0;
    ui->progressBar->setRange(0, fingers.size() * StepsPerFinger);
    ui->progressBar->setValue(0);
    m_scanTimer.setInterval(std::max(1, m_scanDuration / StepsPerFinger));
    m_scanTimer.start();
    showStatus(tr("Приложите палец «%1» к сканеру").arg(fingerBox(fingers.first())->property("plainText").toString()));
    updateControls();
}

void FingerprintWidget::scanStep()
{
    ++m_stepsDone;
    ui->progressBar->setValue(m_stepsDone);
    if (m_stepsDone % StepsPerFinger != 0)
        return;
    const qint16 finger = m_toScan.at(m_scanned.size());
    m_scanned.append(scanned(finger));
    if (m_scanned.size() < m_toScan.size()) {
        const qint16 next = m_toScan.at(m_scanned.size());
        showStatus(tr("Приложите палец «%1» к сканеру").arg(fingerBox(next)->property("plainText").toString()));
        return;
    }
    m_scanTimer.stop();
    // A finger scanned again replaces its old print.
    QList<TEMPLATE_DATA> all;
    for (const TEMPLATE_DATA& data : qAsConst(m_templates)) {
        if (!isFinger(data) || !m_toScan.contains(data.index))
            all.append(data);
    }
    all += m_scanned;
    store(all, tr("Отсканировано и сохранено отпечатков: %1").arg(m_scanned.size()));
}

void FingerprintWidget::removeChosen()
{
    const QList<qint16> fingers = chosenFingers();
    if (isScanning() || m_storing || fingers.isEmpty())
        return;
    QList<TEMPLATE_DATA> kept;
    for (const TEMPLATE_DATA& data : qAsConst(m_templates)) {
        if (!isFinger(data) || !fingers.contains(data.index))
            kept.append(data);
    }
    store(kept, tr("Удалено отпечатков: %1").arg(m_templates.size() - kept.size()));
}

void FingerprintWidget::store(const QList<TEMPLATE_DATA>& templates, const QString& done)
{
    if (!m_data) {
        showStatus(tr("Нет связи с сервером: отпечатки не сохранены"), true);
        return;
    }
    m_storing = true;
    updateControls();
    const QPointer<FingerprintWidget> self(this);
    const vorandel::TYPE_ID user = m_user;
    m_data->setUserFingers(user, templates, [self, user, templates, done](Command& command) {
        if (!self || self->m_user != user)
            return;
        self->m_storing = false;
        QProgressBar* progress = self->ui->progressBar;
        if (command.status == Command::StatusOk) {
            self->m_templates = templates;
            self->m_changed = true;
            self->chooseFingers({});
            self->showStatus(done);
            progress->setValue(progress->maximum());
        } else {
            self->showStatus(command.status == Command::StatusBiometricsLocked
                                 ? tr("Запрещено редактирование биометрической информации")
                                 : tr("Отпечатки не сохранены: %1").arg(failureText(command)),
                             true);
            progress->setValue(0);
        }
        self->updateFingers();
    });
}

void FingerprintWidget::showStatus(const QString& text, bool critical)
{
    if (critical)
        qCInfo(lcFingerprint).noquote() << text;
    QPalette palette = ui->statusLabel->palette();
    palette.setColor(QPalette::WindowText, critical ? QColor(0xc6, 0x28, 0x28) : this->palette().color(QPalette::WindowText));
    ui->statusLabel->setPalette(palette);
    ui->statusLabel->setText(text);
}

void FingerprintWidget::updateFingers()
{
    for (qint16 finger = 0; finger < FingerCount; ++finger) {
        QCheckBox* box = fingerBox(finger);
        const bool held = std::any_of(m_templates.cbegin(), m_templates.cend(),
                                      [finger](const TEMPLATE_DATA& data) { return data.index == finger; });
        const QString name = box->property("plainText").toString();
        box->setText(held ? name + Check : name);
        box->setToolTip(held ? tr("Отпечаток есть") : tr("Отпечатка нет"));
    }
    updateControls();
}

void FingerprintWidget::updateControls()
{
    const bool idle = m_user != 0 && !isScanning() && !m_storing;
    ui->leftHandBox->setEnabled(idle);
    ui->rightHandBox->setEnabled(idle);
    ui->scanButton->setEnabled(idle);
    ui->removeButton->setEnabled(idle && !chosenFingers().isEmpty());
}

void FingerprintWidget::closeEvent(QCloseEvent* event)
{
    m_scanTimer.stop();
    QWidget::closeEvent(event);
    emit closed();
}

void FingerprintWidget::showEvent(QShowEvent* event)
{
    // A page that borrows the widget closes itself.
    ui->closeButton->setVisible(isWindow());
    QWidget::showEvent(event);
}
