#pragma once

#include "vdplatform_export.h"

#include <QValidator>

// Accepts any text but an empty one, or one of blanks only; those are intermediate, so that the
// operator can still type.
class VDPLATFORM_EXPORT EmptyTextValidator : public QValidator
{
    Q_OBJECT
public:
    explicit EmptyTextValidator(QObject* parent = nullptr);

    State validate(QString& input, int& position) const override;
};
