#pragma once

#include "vdwizardpage.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <memory>

class ObjectTreeProxy;
class QListView;
class Ui_RequestPropertiesWizardPage;

// The parameters of a new request: its number, the period of validity, the confirm list and the
// access groups that the pass gives. Its commit button starts the saving.
class RequestPropertiesWizardPage : public VDWizardPage
{
    Q_OBJECT
public:
    explicit RequestPropertiesWizardPage(QWidget* parent = nullptr);
    ~RequestPropertiesWizardPage() override;

    // A number not in use, at least one group, a period of a minute or more that hasn't ended.
    bool isComplete() const override;
    // The page's share of the request.
    QHash<QString, QString> requestProperties() const;

private slots:
    void addPolicy();
    void removePolicy();

private:
    void initModels();
    // The number proposed for the new request, from the administrator's template and the numbers
    // in use.
    QString nextPassId() const;
    // Takes the selected groups of `from` out of its proxy and into the other one.
    void movePolicies(QListView* from, ObjectTreeProxy* source, ObjectTreeProxy* target);

    const std::unique_ptr<Ui_RequestPropertiesWizardPage> ui;
    // Two complementary filters over the same groups: those on offer and those given.
    ObjectTreeProxy* availablePolicies = nullptr;
    ObjectTreeProxy* selectedPolicies = nullptr;
    // The numbers in use when the page was made.
    QSet<QString> passIds;
};
