#pragma once

#include <string>

#include "plot/GnuplotScript.h"
#include "plot/Picture.h"

namespace commands {

/** What a picture is by the end of its name. Throws CLI::ValidationError. @param option its name */
plot::PictureFormat pictureFormatOf(const char* option, const std::string& name);

/** Throws CaseError where the system has no font for such a picture. */
void expectDrawable(plot::PictureFormat format);

/** The file with the picture. Throws CaseError where it cannot be drawn. */
std::string drawn(const plot::Picture& picture, plot::PictureFormat format);

} // namespace commands
