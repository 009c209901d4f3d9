#pragma once

#include "objectinfo.h"

#include <QByteArray>
#include <QDataStream>
#include <QDateTime>
#include <QIcon>
#include <QMetaType>
#include <QString>
#include <QStringList>

// Records that cross the boundary of the data service.
namespace vorandel {

// One change of a subject's access.
struct VDPLATFORM_EXPORT ACCESS_CHANGES
{
    TYPE_ID subject = 0;
    TYPE_ID object = 0;  // access group or policy
    bool state = false;  // grant or take away
    bool set_child = false;
    int ref_type = 2;    // 7 when `object` is a policy, 2 otherwise

    bool operator==(const ACCESS_CHANGES& o) const
    {
        return subject == o.subject && object == o.object && state == o.state && set_child == o.set_child
            && ref_type == o.ref_type;
    }
};

// One biometric template.
struct VDPLATFORM_EXPORT TEMPLATE_DATA
{
    int id = 0;
    int quality = 255;
    int device = 0;
    int kind = 0;             // for palms: 2 a palm, 3 an air palm
    QByteArray data;
    QByteArray extra;
    qint16 index = -1;        // 0..9 a finger, 100/101 a palm, 200/201 a face

    bool operator==(const TEMPLATE_DATA& o) const
    {
        return id == o.id && quality == o.quality && device == o.device && kind == o.kind && data == o.data
            && extra == o.extra && index == o.index;
    }
};

// Asks whether a stored blob differs from the copy at hand.
struct VDPLATFORM_EXPORT BLOB_DATA_RESQUEST
{
    TYPE_ID uid = 0;
    QString name;    // parameter name, as "PT_PHOTO"
    QByteArray md5;  // sum of the local copy

    bool operator==(const BLOB_DATA_RESQUEST& o) const { return uid == o.uid && name == o.name && md5 == o.md5; }
};

// One entry of the system log.
struct VDPLATFORM_EXPORT SYSLOG_DATA
{
    unsigned int code = 0;
    QString user;  // user id in decimal
    QString text;
    QDateTime time;

    bool operator==(const SYSLOG_DATA& o) const
    {
        return code == o.code && user == o.user && text == o.text && time == o.time;
    }
};

// An e-mail composed by the card view and queued on the server.
struct VDPLATFORM_EXPORT EMAIL_MESSAGE
{
    QString to;
    QString subject;
    QString body;
    QStringList attachments;

    bool operator==(const EMAIL_MESSAGE& o) const
    {
        return to == o.to && subject == o.subject && body == o.body && attachments == o.attachments;
    }
};

// A named weekly schedule of access, as the access tab offers it.
struct VDPLATFORM_EXPORT SCHEDULE_DATA
{
    int id = 0;
    QString name;
    QString intervals;  // "1-5 08:00-18:00", as the server keeps it

    bool operator==(const SCHEDULE_DATA& o) const { return id == o.id && name == o.name && intervals == o.intervals; }
};

VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const ACCESS_CHANGES& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, ACCESS_CHANGES& r);
VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const TEMPLATE_DATA& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, TEMPLATE_DATA& r);
VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const BLOB_DATA_RESQUEST& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, BLOB_DATA_RESQUEST& r);
VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const SYSLOG_DATA& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, SYSLOG_DATA& r);
VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const EMAIL_MESSAGE& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, EMAIL_MESSAGE& r);
VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const SCHEDULE_DATA& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, SCHEDULE_DATA& r);

}  // namespace vorandel

// One tab of a plug-in page. The two numbers are the console's: the plug-ins write 0 and 1.
struct VDPLATFORM_EXPORT PLUGIN_TAB
{
    QString title;
    QIcon icon;
    qint32 index = 0;
    qint32 count = 1;
};

VDPLATFORM_EXPORT QDataStream& operator<<(QDataStream& out, const PLUGIN_TAB& r);
VDPLATFORM_EXPORT QDataStream& operator>>(QDataStream& in, PLUGIN_TAB& r);

Q_DECLARE_METATYPE(vorandel::ACCESS_CHANGES)
Q_DECLARE_METATYPE(vorandel::TEMPLATE_DATA)
Q_DECLARE_METATYPE(vorandel::BLOB_DATA_RESQUEST)
Q_DECLARE_METATYPE(vorandel::SYSLOG_DATA)
Q_DECLARE_METATYPE(vorandel::EMAIL_MESSAGE)
Q_DECLARE_METATYPE(vorandel::SCHEDULE_DATA)
Q_DECLARE_METATYPE(PLUGIN_TAB)
