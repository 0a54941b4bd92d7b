#include "kit/SysFileSelect.h"

#include "kit/SysButton.h"
#include "kit/SysFileDialog.h"
#include "kit/SysLineEdit.h"
#include "kit/SysSheet.h"

SysFileSelect::SysFileSelect(QWidget* parent, const QString& buttonText, const QStringList& filters)
    : QSplitter(parent), pathEdit(new SysLineEdit(this)), browseButton(new SysButton(this, "...")) {
    addWidget(pathEdit);
    addWidget(browseButton);
    setOrientation(Qt::Horizontal);
    setStretchFactor(0, 1);
    setStretchFactor(1, 0);
    setChildrenCollapsible(false);
    connect(browseButton, &SysButton::clicked, this, &SysFileSelect::openFileBtnClicked);

    // Qt measures a widget's border inside its size already, so the sheet needs no box-sizing.
    SysSheet::set(
        this,
        QStringLiteral("\tQSplitter {\t\tfont-family: '微软雅黑';\t\tpadding: 0px;\t\tmargin: 0px;"
                       "\t\tbackground: transparent;\t\tborder: 1px solid transparent;\t}"
                       "\tQSplitter::handle {\t\tbackground: transparent;\t\twidth: 0px;\t}"
                       "\tQSplitter:disabled {\t\tborder-color: #c0c0c0;\t}"));
    setFontSize(18);
    setRadius(0.9f);
    setBorderWidth(1);
    setBorderColor("#409eff");
    SysSheet::append(this, QStringLiteral("QLineEdit{margin: 1px;}"
                                          "QLineEdit:read-only {color: #333;}"
                                          "QLineEdit:disabled{color: #c0c0c0;}"));
    pathEdit->setBackgroundColor("transparent");
    browseButton->setBorderWidth(0);
    setEditable(false);

    setButtonText(buttonText);
    this->filters = filters;
}

void SysFileSelect::setButtonText(const QString& text) {
    browseButton->setText(text);
}

void SysFileSelect::setButtonFontWeight(int weight) {
    browseButton->setFontWeight(weight);
}

void SysFileSelect::setButtonTextColor(std::string color) {
    browseButton->setTextColor(color);
}

void SysFileSelect::setEditBackground(std::string color) {
    pathEdit->setBackgroundColor(color);
}

void SysFileSelect::setFontSize(int px) {
    SysSheet::append(this, QString::asprintf("\tQSplitter {\t\tfont-size: %dpx;\t}", px));
    pathEdit->setFontSize(px);
    browseButton->setFontSize(px);
}

void SysFileSelect::setBackgroundColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQSplitter {\t\tbackground-color: %s;\t}", color.c_str()));
}

void SysFileSelect::setRadius(float em) {
    SysSheet::append(this, QString::asprintf("\tQSplitter {\t\tborder-radius: %.2fem;\t}", em));
    // The parts sit inside the border, so their corners are tighter by about its width.
    pathEdit->setRadius(em - 0.3125f);
    browseButton->setRadius(em - 0.3125f);
}

void SysFileSelect::setBorderWidth(int px) {
    SysSheet::append(this, QString::asprintf("\tQSplitter {\t\tborder-width: %dpx;\t}", px));
    pathEdit->setBorderWidth(px);
    browseButton->setBorderWidth(px);
}

void SysFileSelect::setBorderColor(std::string color) {
    SysSheet::append(this,
                     QString::asprintf("\tQSplitter {\t\tborder-color: %s;\t}", color.c_str()));
    pathEdit->setThemeColor(color);
    browseButton->setThemeColor(color);
}

void SysFileSelect::setNoBorder() {
    setBorderWidth(0);
    setRadius(0);
}

void SysFileSelect::setEditable(bool editable) {
    pathEdit->setReadOnly(!editable);
}

void SysFileSelect::clear() {
    pathEdit->clear();
}

void SysFileSelect::setFilters(const QStringList& filters) {
    this->filters = filters;
}

void SysFileSelect::setCaption(const QString& caption) {
    this->caption = caption;
}

void SysFileSelect::setMode(int mode) {
    this->mode = mode;
}

void SysFileSelect::openFileBtnClicked() {
    const QString filter = filters.join(';');
    QString answer;
    switch (mode) {
    case OpenFile:
        answer = SysFileDialog::getOpenFileName(this, caption, QString(), filter);
        break;
    case ExistingDirectory:
        answer = SysFileDialog::getExistingDirectory(this, caption, QString());
        break;
    case SaveFile:
        answer = SysFileDialog::getSaveFileName(this, caption, QString(), filter);
        break;
    default:
        return;
    }
    if (answer.isEmpty())
        return;
    pathEdit->setText(answer);
    emit selected(answer);
}
