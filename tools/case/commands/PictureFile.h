#pragma once

#include <string>

#include "plot/GnuplotScript.h"
#include "plot/Picture.h"

namespace commands {

/**
 * The format of a picture by the suffix of its name. Throws CLI::ValidationError. @param option for
 * the message
 */
plot::PictureFormat pictureFormatOf(const char* option, const std::string& name);

/** Throws CaseError if the system has no font for such a picture. */
void expectDrawable(plot::PictureFormat format);

/** The content of the picture file. Throws CaseError if it cannot be drawn. */
std::string drawn(const plot::Picture& picture, plot::PictureFormat format);

} // namespace commands
