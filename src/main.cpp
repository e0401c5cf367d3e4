#include "KorvoApp.h"
#include "Platform/Platform.h"

int main(int argc, char **argv)
{
    const auto platform = korvo::Platform::create();
    korvo::KorvoApp app(argc, argv, *platform);
    return app.exec();
}
