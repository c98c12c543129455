#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

namespace searchdata {

/// The about box: the library's name and version, what it does, and what Qt tells of the system.
class frmAbout : public QDialog {
    Q_OBJECT
public:
    explicit frmAbout(QWidget* parent = nullptr);

    /// The operating system, kernel, processor architecture and Qt version, one a line.
    static QString SystemInformation();

private:
    void cmdSysInfo_Click();

    QLabel* picIcon;
    QLabel* lblTitle;
    QLabel* lblVersion;
    QLabel* lblDescription;
    QLabel* lblDisclaimer;
    QPushButton* cmdOk;
    QPushButton* cmdSysInfo;
};

} // namespace searchdata
