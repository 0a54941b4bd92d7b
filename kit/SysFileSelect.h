#pragma once

#include <QSplitter>
#include <QStringList>

#include <string>

class SysButton;
class SysLineEdit;

// A path field with a browse button that asks for a file to open, a folder, or a file to save
// to. The path shown is the last one chosen; the field is read-only unless made editable.
class SysFileSelect : public QSplitter {
    Q_OBJECT

public:
    enum Mode { OpenFile = 0, ExistingDirectory = 1, SaveFile = 2 };

    explicit SysFileSelect(QWidget* parent = nullptr, const QString& buttonText = "...",
                           const QStringList& filters = QStringList());

    void setButtonText(const QString& text);
    void setButtonFontWeight(int weight);
    void setButtonTextColor(std::string color);
    void setEditBackground(std::string color);
    // The whole and both parts.
    void setFontSize(int px);
    void setBackgroundColor(std::string color);
    // The whole; the parts get a smaller radius so that they sit inside its border.
    void setRadius(float em);
    void setBorderWidth(int px);
    // The border of the whole, and the theme of both parts.
    void setBorderColor(std::string color);
    void setNoBorder();
    void setEditable(bool editable);
    void clear();
    // Patterns such as "*.bin", offered together in the dialog.
    void setFilters(const QStringList& filters);
    // Title of the dialog.
    void setCaption(const QString& caption);
    // One of Mode; another value makes the button do nothing.
    void setMode(int mode);

    SysLineEdit* pathEdit;
    SysButton* browseButton;
    QString caption;
    QStringList filters;
    int mode = OpenFile;

signals:
    // A path was chosen in the dialog; it is in the field already.
    void selected(QString strFile);

protected slots:
    void openFileBtnClicked();
};
