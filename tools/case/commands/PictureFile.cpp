#include "commands/PictureFile.h"

#include <CLI/CLI.hpp>
#include <QFileInfo>

#include "plot/Gnuplot.h"

namespace commands {

plot::PictureFormat pictureFormatOf(const char* option, const std::string& name)
{
    const QString suffix = QFileInfo(QString::fromStdString(name)).suffix().toLower();
    if (suffix == "svg") {
        return plot::PictureFormat::Svg;
    }
    if (suffix == "png") {
        return plot::PictureFormat::Png;
    }
    throw CLI::ValidationError(option, "'" + name + "': expected a name that ends in .svg or .png");
}

void expectDrawable(plot::PictureFormat format)
{
    if (format == plot::PictureFormat::Png) {
        plot::expectFont();
    }
}

std::string drawn(const plot::Picture& picture, plot::PictureFormat format)
{
    return plot::runGnuplot(plot::gnuplotScript(plot::layOut(picture), format));
}

} // namespace commands
