#pragma once

#include <string>

namespace report {

/**
 * The same picture in about 60 % of the bytes: gnuplot repeats the same attributes in each group,
 * and writes texts without letters. Anything but an SVG of gnuplot is returned unchanged.
 */
std::string compactSvg(const std::string& svg);

} // namespace report
