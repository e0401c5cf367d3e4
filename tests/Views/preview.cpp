// korvo-views FOLDER [--references] - draws the views with sample content into PNG files, for a person to look at; or
// only those that GalleryTest compares with, for tests/Fixtures/views.

#include "Gallery.h"

#include <QApplication>
#include <QDir>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace korvo;

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const auto arguments = app.arguments();
    const bool onlyReferences = arguments.value(2) == u"--references"_s;
    if (arguments.size() != (onlyReferences ? 3 : 2)) {
        std::fputs("usage: korvo-views FOLDER [--references]\n", stderr);
        return 2;
    }
    gallery::useFixedLook();
    const QDir folder(arguments.at(1));
    folder.mkpath(u"."_s);
    auto samples = gallery::references();
    if (!onlyReferences)
        samples = gallery::panels() + gallery::focusRings() + gallery::systemViews() + gallery::settingsTabs()
            + gallery::faces();
    for (const auto &sample : samples) {
        const auto path = folder.filePath(gallery::fileName(sample));
        constexpr int smallest = 0;
        if (!sample.draw({}).save(path, "PNG", smallest)) {
            std::fprintf(stderr, "korvo-views: cannot write %s\n", qPrintable(path));
            return 1;
        }
    }
    return 0;
}
