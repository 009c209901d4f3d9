#include "nulltransport.h"

#include "vdserverinterface.h"

#include <QCoreApplication>

NullTransport::NullTransport()
{
    VDServerInterface::instance()->setTransport(this);
}

NullTransport::~NullTransport()
{
    if (VDServerInterface::instance()->transport() == this)
        VDServerInterface::instance()->setTransport(nullptr);
}

void NullTransport::send(const Command& query, std::function<void(Command&)> reply)
{
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [query, reply = std::move(reply)] {
            Command answer = query;
            answer.status = Command::StatusOk;
            answer.data.clear();
            reply(answer);
        },
        Qt::QueuedConnection);
}
