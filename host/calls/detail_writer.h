// Writes the details of a message. Each family has a source that reads its details.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "details.h"

class DetailWriter {
  public:
    explicit DetailWriter(MessageDetails& details) : details_(details) {}

    /// Adds a fact. An empty text or list adds none.
    void fact(std::string_view name, std::string value);
    void fact(std::string_view name, std::vector<std::string> value);
    void fact(std::string_view name, int64_t value);
    void fact(std::string_view name, bool value);

    /// Adds to the summary, after a blank: words of the program, or text from the wire, which is
    /// escaped. An empty text adds nothing.
    void say(std::string_view words);
    void sayWire(std::string_view wire);
    void sayNumber(int64_t value) { say(std::to_string(value)); }
    /// Adds "4711 -> 4712" to the summary, if one of the two is known.
    void sayParties(std::string_view from, std::string_view to);
    /// Adds a list from the wire to the summary, with commas. Of a long list it adds the first
    /// elements and the number of the others.
    void sayList(const std::vector<std::string>& list);
    /// Adds a label and an address to the summary, if there is an address.
    void sayAddress(std::string_view label, std::string_view address);

    /// Adds a text from the wire to the summary, and as a fact.
    void both(std::string_view name, const std::string& value) {
        sayWire(value);
        fact(name, value);
    }

  private:
    void separate();

    MessageDetails& details_;
};

/// Adds the details of the message that the decoder decoded last.
///   modules  those that it was decoded with
///   q931     the Q.931 message around it; null if there is none
void readRasDetails(const TamselModules& modules, const TamselDecoder& decoder,
                    DetailWriter& writer);
void readUiDetails(const TamselModules& modules, const TamselDecoder& decoder,
                   const Q931Message* q931, DetailWriter& writer);
void readH245Details(const TamselModules& modules, const TamselDecoder& decoder,
                     DetailWriter& writer);

/// Adds the details of a message that consists only of Q.931, or whose content did not decode.
void readQ931Details(const Q931Message& q931, DetailWriter& writer);
/// Adds the cause of Q.931, as a number and in words, if there is one.
void readCause(const Q931Message& q931, DetailWriter& writer);

/// Characters as UTF-8; a lone surrogate as U+FFFD.
std::string utf8Of(std::span<const uint16_t> characters);
/// Octets as text, unchanged.
std::string textOf(std::span<const uint8_t> octets);
