// Names: of files, C++ structures and members, and those in a dump.
#pragma once

#include "model.h"

/// "H323" of "H323.asn".
std::string fileStem(const std::string& file);
/// What the structures of the module in the file begin with.
std::string modulePrefix(const std::string& stem);
/// "H225" and "RAS-Message" as H225RAS_Message.
std::string typeName(const std::string& prefix, const std::string& name);
/// The name of a type inside another one, made from its place.
std::string innerTypeName(const std::string& outer, const std::string& name);
std::string memberName(const std::string& name);
/// Whether records have a member of this name that is no component, such as "m".
bool isSharedMember(const std::string& cppName);

/// Refuses files and modules whose generated names would collide.
void checkModuleNames(const Model& model, Errors& errors);
/// Refuses types whose structures would have the same name.
void checkTypeNames(const Model& model, Errors& errors);
/// Renames members in the dump as exceptions.h says; none in a set that is decoded as published.
void applyNameExceptions(Module& module, Errors& errors);
