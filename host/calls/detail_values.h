// Values of H.225.0 and H.245 as text, for the types of both sets of modules. Text from the wire is
// not escaped.
#pragma once

#include <string>
#include <vector>

#include "2009/H245Names.h"
#include "2009/H323Names.h"
#include "H245Names.h"
#include "H323Names.h"
#include "detail_writer.h"
#include "endpoint.h"

/// The name of the chosen alternative; "alternative 31" if the modules do not know it; empty if the
/// component is absent.
template <class Choice>
std::string chosenText(const Choice& choice) {
    const std::string_view name = asnAlternativeName(choice);
    if (!name.empty() || choice.t == 0) return std::string(name);
    return "alternative " + std::to_string(choice.t);
}

/// As UTF-8.
inline std::string textOf(const AsnBMPString& text) {
    return utf8Of({text.data, text.nchars});
}

/// A transport address of H.225.0: "10.0.0.1:1720"; the name of its kind if it is no IP address;
/// empty if it is absent.
template <class Address>
std::string addressText(const Address& address) {
    const auto text = [](const auto& ip) {
        return toString(makeEndpoint({ip.ip.data, ip.ip.numocts}, static_cast<unsigned>(ip.port)));
    };
    if (address.t == Address::ipAddress) return text(*address.u.ipAddress);
    if (address.t == Address::ip6Address) return text(*address.u.ip6Address);
    return chosenText(address);
}

/// The digits of a party number, or the name of its kind if it has no digits.
template <class Number>
std::string numberText(const Number& number) {
    const auto& u = number.u;
    if constexpr (requires { Number::publicNumber; }) {
        if (number.t == Number::publicNumber) return u.publicNumber->publicNumberDigits;
    } else {
        if (number.t == Number::e164Number) {
            if constexpr (requires { u.e164Number->publicNumberDigits; })
                return u.e164Number->publicNumberDigits;
            else
                return u.e164Number->address;
        }
    }
    if (number.t == Number::dataPartyNumber) return u.dataPartyNumber;
    if (number.t == Number::telexPartyNumber) return u.telexPartyNumber;
    if (number.t == Number::nationalStandardPartyNumber) return u.nationalStandardPartyNumber;
    if (number.t == Number::privateNumber) {
        if constexpr (requires { u.privateNumber->privateNumberDigits; })
            return u.privateNumber->privateNumberDigits;
        else
            return u.privateNumber->address;
    }
    return chosenText(number);
}

/// The text of an alias, or the name of its kind if it has no text.
template <class Alias>
std::string aliasText(const Alias& alias) {
    const auto& u = alias.u;
    if constexpr (requires { Alias::dialledDigits; }) {
        if (alias.t == Alias::dialledDigits) return u.dialledDigits;
        if (alias.t == Alias::isupNumber) return numberText(*u.isupNumber);
    } else {
        if (alias.t == Alias::e164) return u.e164;
    }
    if (alias.t == Alias::h323_ID) return textOf(*u.h323_ID);
    if (alias.t == Alias::url_ID) return u.url_ID;
    if (alias.t == Alias::email_ID) return u.email_ID;
    if (alias.t == Alias::transportID) return addressText(*u.transportID);
    if (alias.t == Alias::partyNumber) return numberText(*u.partyNumber);
    return chosenText(alias);
}

template <class Aliases>
std::vector<std::string> aliasTexts(const Aliases& aliases) {
    std::vector<std::string> texts;
    for (uint32_t i = 0; i < aliases.n; ++i) texts.push_back(aliasText(aliases.elem[i]));
    return texts;
}

/// The first alias; empty if there is none.
template <class Aliases>
std::string firstAlias(const Aliases& aliases) {
    return aliases.n > 0 ? aliasText(aliases.elem[0]) : "";
}
