#include "KorvoApp.h"
#include "Platform/Platform.h"
#include "Platform/SingleInstance.h"

int main(int argc, char **argv)
{
    const auto platform = korvo::Platform::create();
    korvo::KorvoApp app(argc, argv, *platform);
    if (!platform->singleInstance().claim())
        return 0; // The one that runs shows its panel instead.
    return app.exec();
}
