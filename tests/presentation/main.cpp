#include "propertypanelhelpertest.h"
#include "requestfilterwidgettest.h"
#include "requestinfopaneltest.h"
#include "requestmodeltest.h"
#include "testicontheme.h"

#include "testenvironment.h"

#include <QApplication>
#include <QTest>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    const TestEnvironment environment;
    const TestIconTheme icons;

    RequestModelTest model;
    RequestFilterWidgetTest filter;
    RequestInfoPanelTest panel;
    PropertyPanelHelperTest look;
    int failed = 0;
    for (QObject* test : {static_cast<QObject*>(&model), static_cast<QObject*>(&filter),
                          static_cast<QObject*>(&panel), static_cast<QObject*>(&look)}) {
        failed += QTest::qExec(test, argc, argv);
    }
    return failed;
}
