// searchdata-demo: a small host that shows a base table of a database, the entry control on its
// current record, and the library's filter and administrator's dialogs.

#include "DemoStart.h"
#include "DemoWindow.h"
#include "searchdata/Resources.h"

#include <QApplication>
#include <QCommandLineParser>

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("searchdata-demo"));
    QGuiApplication::setApplicationDisplayName(searchdata::GetResourceText(9450));

    QCommandLineParser parser;
    parser.setApplicationDescription(searchdata::GetResourceText(9451));
    parser.addHelpOption();
    const QCommandLineOption db(QStringLiteral("db"), searchdata::GetResourceText(9452), searchdata::GetResourceText(9453));
    parser.addOption(db);
    parser.process(app);

    const auto window = searchdata::demo::StartDemo(parser.value(db));
    if (!window)
        return 1;
    window->show();
    return app.exec();
}
