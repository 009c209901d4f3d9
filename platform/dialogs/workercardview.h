#pragma once

#include "propertybasewidget.h"
#include "servicerecords.h"
#include "taskinfo.h"

#include <QVariantMap>

// The worker's means of identification: cards, PIN, biometrics.
class VDPLATFORM_EXPORT WorkerCardView : public PropertyBaseWidget
{
    Q_OBJECT
public:
    explicit WorkerCardView(QWidget* parent = nullptr);

    void addDevice(const vorandel::ObjectInfo& device);
    void setCards(const QList<vorandel::ObjectInfo>& cards);
    QList<vorandel::ObjectInfo> cards() const;
    void setShowPinEnabled(bool enabled);
    void setChangeCardEnabled(bool enabled);
    void setChangePinCodeEnabled(bool enabled);
    void setScanBiometricsEnabled(bool enabled);
    // The pages the dialog shows as sub tabs of this tab.
    QList<QWidget*> subPages() const;
    void showBlock(int block, bool visible);
    void showSubPage(int index);

public slots:
    void cardRead(const vorandel::ObjectInfo& card);
    void cardReadFailed();
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
};
