// Writes one resolved module as C++.
#pragma once

#include <string>

#include "model.h"

std::string emitHeader(const Module& module);    // H245.h: structures and prototypes
std::string emitDecoders(const Module& module);  // H245Decode.h
std::string emitInstances(const Module& module, const std::string& reader);
std::string emitPrinters(const Module& module);  // H245Print.cpp
std::string emitTypes(const Module& module);     // H245Types.cpp: the table of all types

// --- shared by the emitters ---

/// Text under construction, line by line.
class Lines {
  public:
    explicit Lines(const Module& module, const std::string& purpose);
    void operator()(int indent, const std::string& line);
    void blank() { text_ += '\n'; }
    const std::string& text() const { return text_; }

  private:
    std::string text_;
};

/// "// MultiplexElement ::= SEQUENCE (H245.asn:1400)"
std::string typeComment(const Module& module, const Type& type);
