// A program that uses texts as a host does from its start: ResourcesChild [--folder DIR] [--load FILE] NUMBER
// prints text NUMBER after the host's folder or table, if given, was set.

#include "searchdata/Resources.h"

#include <QCoreApplication>
#include <cstdio>

extern "C" const char* __asan_default_options() { return "detect_leaks=0"; }

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    while (args.size() > 2) {
        const QString option = args.takeFirst();
        const QString value = args.takeFirst();
        if (option == QLatin1String("--folder"))
            searchdata::ResourceTable::setTranslationFolder(value);
        else if (option == QLatin1String("--load"))
            searchdata::ResourceTable::load(value);
        else
            return 2;
    }
    if (args.size() != 1)
        return 2;
    std::fputs(searchdata::GetResourceText(args.first().toInt()).toUtf8().constData(), stdout);
    return 0;
}
