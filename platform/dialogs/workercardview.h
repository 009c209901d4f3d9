#pragma once

#include "propertybasewidget.h"
#include "servicerecords.h"
#include "taskinfo.h"

#include <QVariantMap>

#include <memory>

namespace Ui {
class WorkerCardView;
}

// The worker's means of identification: cards, PIN, biometrics.
//
// The view itself shows the PIN block and, below it, its sub pages ("Карты", "Биометрия"),
// one at a time. A dialog may take the sub pages away into sub tabs of its own; the view then
// shows the PIN block alone.
class VDPLATFORM_EXPORT WorkerCardView : public PropertyBaseWidget
{
    Q_OBJECT
public:
    // The parts that showBlock() shows and hides.
    enum Block {
        PinBlock = 0,
        PagesBlock = 1,
    };

    explicit WorkerCardView(QWidget* parent = nullptr);
    ~WorkerCardView() override;

    // Offers a reader to read cards with; a reader already offered (by uid) is only renamed.
    void addDevice(const vorandel::ObjectInfo& device);
    void setCards(const QList<vorandel::ObjectInfo>& cards);
    // The cards as the operator sees them: the saved ones, less those he removed, and the new.
    QList<vorandel::ObjectInfo> cards() const;
    void setShowPinEnabled(bool enabled);
    void setChangeCardEnabled(bool enabled);
    void setChangePinCodeEnabled(bool enabled);
    void setScanBiometricsEnabled(bool enabled);
    // The pages the dialog shows as sub tabs of this tab: "Карты" and "Биометрия".
    QList<QWidget*> subPages() const override;
    void showBlock(int block, bool visible);
    // A card read was asked for and its answer hasn't come.
    bool isReadingCard() const { return m_reading; }

    void setReadOnly(bool readOnly) override;
    void setCurrent(const vorandel::OBJECT_HASH& objects) override;
    QHash<QString, QString> editedProperties() const override;

public slots:
    // Hands the card changes on as one task "update_worker_cards".
    void applyChanges() override;
    void rejectChanges() override;
    void showSubPage(int index) override;
    void cardRead(const vorandel::ObjectInfo& card);
    void cardReadFailed();
    // The answer to the task that applyChanges() handed on: the worker's uid, or 0 and a text.
    void cardsSaved(vorandel::TYPE_ID uid, const QString& error);
    void setWorkerFingers(vorandel::TYPE_ID worker, const QVariantMap& templatesCount);
    void biometricsScanned(vorandel::TYPE_ID worker, const QList<vorandel::TEMPLATE_DATA>& fingers);

signals:
    void appendTask(const vorandel::TaskInfo& task);
    void readCard(vorandel::TYPE_ID device);
    void getFingerprints(vorandel::TYPE_ID worker);
    void setSaveEnabled(const QString& part, bool enabled);
    void showMessage(const QString& text);
    void showCriticalMessage(const QString& text);
    void generateCard(const vorandel::ObjectInfo& card);
    void sendEmail(const vorandel::EMAIL_MESSAGE& email);

private:
    // A card the worker may get, or the reason why not.
    QString refusalFor(const vorandel::ObjectInfo& card) const;
    // Adds the card unless it is refused, which is said; true when added.
    bool addCard(vorandel::ObjectInfo card);
    void addTypedCard();
    void removeSelectedCard();
    void readOrCancel();
    void finishReading();
    void scanBiometrics();
    void showCards();
    void showCounts(const QVariantMap& counts);
    void updateControls();

    std::unique_ptr<Ui::WorkerCardView> ui;
    QList<vorandel::ObjectInfo> m_cards;    // as saved
    QList<vorandel::ObjectInfo> m_added;    // new, not yet handed on
    QList<vorandel::ObjectInfo> m_removed;  // saved ones taken away, not yet handed on
    // What the last save handed on, until its answer comes.
    struct Sending
    {
        bool active = false;
        QList<vorandel::ObjectInfo> added;
        QList<vorandel::ObjectInfo> removed;
    } m_sending;
    bool m_reading = false;
    // Every feature is there unless the owner turns it off.
    bool m_showPinEnabled = true;
    bool m_changeCardEnabled = true;
    bool m_changePinEnabled = true;
    bool m_scanEnabled = true;
};
