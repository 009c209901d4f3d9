#pragma once

#include "vdplatform_export.h"

#include <QPixmap>
#include <QWidget>

class QLabel;
class QToolButton;

// A person's photo: the picture, or a default one when none was put in, and a button that
// loads one from a file.
class VDPLATFORM_EXPORT PhotoWidget : public QWidget
{
    Q_OBJECT
public:
    explicit PhotoWidget(QWidget* parent = nullptr);
    ~PhotoWidget() override;

    // What is shown while no photo was put in.
    void setDefaultPixmap(const QPixmap& pixmap);
    // The photo put in, or the default picture.
    QPixmap pixmap() const;
    // Whether a photo was put in (loaded or set), as opposed to the default picture.
    bool isPhotoSet() const { return m_photoSet; }

    void setPixmap(const QPixmap& photo);
    // Loads a picture from a file; false, with the photo unchanged, when it isn't one.
    bool loadFromFile(const QString& path);

public slots:
    // Asks the operator for a picture file.
    void choosePhoto();
    // Back to the default picture.
    void clear();

signals:
    void photoChanged();

protected:
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void showPicture();

    QLabel* m_picture = nullptr;
    QToolButton* m_load = nullptr;
    QToolButton* m_clear = nullptr;
    QPixmap m_default;
    QPixmap m_photo;
    bool m_photoSet = false;
};
