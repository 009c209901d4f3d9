#include "photowidget.h"

#include "platformlogging.h"

#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QImageReader>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>

PhotoWidget::PhotoWidget(QWidget* parent)
    : QWidget(parent), m_picture(new QLabel(this)), m_load(new QToolButton(this)), m_clear(new QToolButton(this))
{
    m_picture->setObjectName(QStringLiteral("picture"));
    m_picture->setAlignment(Qt::AlignCenter);
    m_picture->setMinimumSize(120, 150);
    m_picture->setFrameShape(QFrame::StyledPanel);
    m_load->setObjectName(QStringLiteral("loadButton"));
    m_load->setText(tr("Загрузить…"));
    m_load->setToolTip(tr("Загрузить фотографию из файла"));
    m_clear->setObjectName(QStringLiteral("clearButton"));
    m_clear->setText(tr("Убрать"));
    m_clear->setToolTip(tr("Убрать фотографию"));

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(m_load);
    buttons->addWidget(m_clear);
    buttons->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_picture, 1);
    layout->addLayout(buttons);

    connect(m_load, &QToolButton::clicked, this, &PhotoWidget::choosePhoto);
    connect(m_clear, &QToolButton::clicked, this, &PhotoWidget::clear);
    showPicture();
}

PhotoWidget::~PhotoWidget() = default;

void PhotoWidget::setDefaultPixmap(const QPixmap& pixmap)
{
    m_default = pixmap;
    showPicture();
}

QPixmap PhotoWidget::pixmap() const
{
    return m_photoSet ? m_photo : m_default;
}

void PhotoWidget::setPixmap(const QPixmap& photo)
{
    m_photo = photo;
    m_photoSet = !photo.isNull();
    showPicture();
    emit photoChanged();
}

bool PhotoWidget::loadFromFile(const QString& path)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    if (image.isNull()) {
        qCWarning(lcWidgets) << "fail: no picture in" << path << reader.errorString();
        return false;
    }
    setPixmap(QPixmap::fromImage(image));
    return true;
}

void PhotoWidget::choosePhoto()
{
    // Every format the installed image plug-ins read, and the folder of the last photo taken.
    static QString folder;
    QStringList patterns;
    for (const QByteArray& format : QImageReader::supportedImageFormats())
        patterns << QStringLiteral("*.") + QString::fromLatin1(format);
    const QString path = QFileDialog::getOpenFileName(this, tr("Фотография"), folder,
                                                      tr("Изображения (%1)").arg(patterns.join(QLatin1Char(' '))));
    if (path.isEmpty())
        return;
    folder = QFileInfo(path).absolutePath();
    loadFromFile(path);
}

void PhotoWidget::clear()
{
    m_photo = QPixmap();
    m_photoSet = false;
    showPicture();
    emit photoChanged();
}

void PhotoWidget::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::EnabledChange)
        showPicture();
}

void PhotoWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    showPicture();
}

void PhotoWidget::showPicture()
{
    const QPixmap shown = pixmap();
    m_picture->setPixmap(shown.isNull() ? QPixmap()
                                        : shown.scaled(m_picture->contentsRect().size(), Qt::KeepAspectRatio,
                                                       Qt::SmoothTransformation));
    m_clear->setEnabled(isEnabled() && m_photoSet);
}
