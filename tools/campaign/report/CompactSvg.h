#pragma once

#include <string>

namespace report {

/**
 * The same picture in about 60 % of the bytes: gnuplot repeats the same attributes on each of its
 * groups, and writes texts without letters. What is no SVG of gnuplot stays as it is.
 */
std::string compactSvg(const std::string& svg);

} // namespace report
