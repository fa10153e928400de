// How the details of a message are put together; for the sources that read a family's details.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "details.h"

class DetailWriter {
  public:
    explicit DetailWriter(MessageDetails& details) : details_(details) {}

    /// Adds a fact. A text or list that is empty is none.
    void fact(std::string_view name, std::string value);
    void fact(std::string_view name, std::vector<std::string> value);
    void fact(std::string_view name, int64_t value);
    void fact(std::string_view name, bool value);

    /// Adds to the summary, after a blank: words of the program's own, or text from the wire.
    void say(std::string_view words);
    void sayWire(std::string_view wire);
    void sayNumber(int64_t value) { say(std::to_string(value)); }
    /// "4711 -> 4712", if either is known.
    void sayParties(std::string_view from, std::string_view to);
    /// A list from the wire, with commas; of a long one, how many more there are.
    void sayList(const std::vector<std::string>& list);
    /// A name and an address, if there is one.
    void sayAddress(std::string_view label, std::string_view address);

    /// The same text as a fact and in the summary.
    void both(std::string_view name, const std::string& value) {
        sayWire(value);
        fact(name, value);
    }

  private:
    void separate();

    MessageDetails& details_;
};

/// A family's details: of the message that was decoded last. They are added to what is there.
void readRasDetails(const TamselModules& modules, const TamselDecoder& decoder,
                    DetailWriter& writer);
void readUiDetails(const TamselModules& modules, const TamselDecoder& decoder,
                   const Q931Message* q931, DetailWriter& writer);
void readH245Details(const TamselModules& modules, const TamselDecoder& decoder,
                     DetailWriter& writer);

/// What Q.931 says of a message that has nothing else to say.
void readQ931Details(const Q931Message& q931, DetailWriter& writer);
/// The cause, in words.
void readCause(const Q931Message& q931, DetailWriter& writer);

/// Characters as UTF-8; a lone surrogate as U+FFFD.
std::string utf8Of(std::span<const uint16_t> characters);
/// Octets as text, as they are.
std::string textOf(std::span<const uint8_t> octets);
