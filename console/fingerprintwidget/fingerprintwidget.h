#pragma once

#include "objectinfo.h"
#include "servicerecords.h"

#include <QList>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>

class Command;
class QCheckBox;
namespace Ui {
class FingerprintWidget;
}
namespace vd5sdk {
class Data;
}

// Enrols a worker's fingerprints: the operator marks fingers, the scanner (simulated) takes them
// one after the other, and the new templates are stored with the server at once. It is a window
// of its own, or a part of a page that borrows it (then it has no close button).
class FingerprintWidget : public QWidget
{
    Q_OBJECT
public:
    explicit FingerprintWidget(QWidget* parent = nullptr);
    ~FingerprintWidget() override;

    // Where templates are read and stored; without it nothing is.
    void setDataService(vd5sdk::Data* data);
    // How long the scanner takes for one finger.
    void setScanDuration(int msecs) { m_scanDuration = msecs; }

    vorandel::TYPE_ID user() const { return m_user; }
    QString caller() const { return m_caller; }
    // The worker's templates as the server keeps them now.
    QList<vorandel::TEMPLATE_DATA> templates() const { return m_templates; }
    // Whether templates were stored since the worker was set.
    bool isChanged() const { return m_changed; }
    bool isScanning() const { return m_scanTimer.isActive(); }
    // The fingers marked to be scanned or removed, by template index.
    QList<qint16> chosenFingers() const;
    void chooseFingers(const QList<qint16>& fingers);

    // The name of whoever borrows the widget.
    Q_INVOKABLE void setCaller(const QString& caller);
    // Shows this worker and asks the server for his templates.
    Q_INVOKABLE void setUser(vorandel::TYPE_ID uid);

public slots:
    // Scans the fingers marked; with none marked, the index fingers that have no print yet. Asked
    // before the worker's prints are in, it starts once they are.
    void scan();
    // Removes the prints of the fingers marked.
    void removeChosen();

signals:
    // The window was closed.
    void closed();

protected:
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void templatesRead(Command& command);
    void scanStep();
    // Stores the worker's templates as a whole; they count once the server has them.
    void store(const QList<vorandel::TEMPLATE_DATA>& templates, const QString& done);
    void showStatus(const QString& text, bool critical = false);
    void updateFingers();
    void updateControls();
    QCheckBox* fingerBox(qint16 index) const;

    std::unique_ptr<Ui::FingerprintWidget> ui;
    QPointer<vd5sdk::Data> m_data;
    QString m_caller;
    vorandel::TYPE_ID m_user = 0;
    QList<vorandel::TEMPLATE_DATA> m_templates;
    bool m_changed = false;
    bool m_loading = false;       // the worker's prints are asked for
    bool m_scanWhenLoaded = false;
    bool m_storing = false;

    QTimer m_scanTimer;
    int m_scanDuration = 1200;
    QList<qint16> m_toScan;
    QList<vorandel::TEMPLATE_DATA> m_scanned;
    int m_stepsDone = 0;
};
