#include "serverprocess.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QRegularExpression>

ServerProcess::ServerProcess(const QStringList& arguments) : m_arguments(arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // The data folder of the server stays in the sandbox whatever happens.
    environment.insert(QStringLiteral("XDG_DATA_HOME"), m_folder.path());
    environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("vd.server.info=true"));
    m_process.setProcessEnvironment(environment);
}

ServerProcess::~ServerProcess()
{
    kill();
}

QString ServerProcess::storeFile() const
{
    return QDir(m_folder.path()).filePath(QStringLiteral("store.sqlite"));
}

bool ServerProcess::start()
{
    const QString listen = QStringLiteral("127.0.0.1:%1").arg(m_port);
    m_process.start(QStringLiteral(VDSERVER_BINARY),
                    QStringList{"--listen", listen, "--database", storeFile()} + m_arguments);
    static const QRegularExpression Listening(QStringLiteral("listening on 127\\.0\\.0\\.1:(\\d+)"));
    QString out;
    const QDeadlineTimer deadline(60000);
    while (!deadline.hasExpired()) {
        m_process.waitForReadyRead(100);
        out += QString::fromUtf8(m_process.readAllStandardOutput());
        const QRegularExpressionMatch match = Listening.match(out);
        if (match.hasMatch()) {
            m_port = quint16(match.captured(1).toUInt());
            return true;
        }
        if (m_process.state() == QProcess::NotRunning) {
            m_error = QStringLiteral("vdserver ended: ") + log();
            return false;
        }
    }
    m_error = QStringLiteral("vdserver did not listen in time: ") + out;
    return false;
}

bool ServerProcess::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return true;
    m_process.terminate();
    return m_process.waitForFinished(10000);
}

void ServerProcess::kill()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished();
}

QString ServerProcess::log()
{
    m_log += QString::fromUtf8(m_process.readAllStandardError());
    return m_log;
}
