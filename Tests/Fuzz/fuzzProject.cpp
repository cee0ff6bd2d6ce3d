#include "Project/ProjectFileLoader.h"
#include "ScratchFile.h"

#include <cstdlib>

/// A project of any content opens, and says so.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static corv::fuzz::ScratchFile project(QStringLiteral("p.ecor"));
    corv::ProjectFileLoader loader;
    const QVariantMap loaded = loader.loadProject(project.hold(data, size));
    if (!loaded.value(QStringLiteral("loaded")).toBool() ||
        !loaded.contains(QStringLiteral("properties")))
        std::abort();
    return 0;
}
