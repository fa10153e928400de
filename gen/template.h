// Text made from templates that look like the result.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

/// The names of places and what is filled in.
using Places = std::initializer_list<std::pair<std::string_view, std::string>>;

/// Fills the places of a template, which are written "$name" or "${name}".
///
/// A place that stands alone on its line takes any number of lines, each with the margin of the
/// place. A line with a place that is filled with nothing is left out. An empty first line is left
/// out too, so that a raw string can begin on a line of its own; the result ends with a line end if
/// the template does. Every place has to be among the names.
std::string fill(std::string_view text, Places places);
