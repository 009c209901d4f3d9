#include "emptytextvalidator.h"

EmptyTextValidator::EmptyTextValidator(QObject* parent) : QValidator(parent) {}

QValidator::State EmptyTextValidator::validate(QString& input, int&) const
{
    return input.trimmed().isEmpty() ? Intermediate : Acceptable;
}
