// Short names of H.245 media and capabilities: "g711Alaw64k", "h263", "t38fax", "h264".
#pragma once

#include <algorithm>

#include "detail_values.h"

/// The name of a capability that is an object identifier; the identifier itself if it has no name
/// here.
std::string genericName(const AsnObjId& identifier);

/// A name without the endings that many names have: "h261VideoCapability" becomes "h261".
std::string shortName(std::string_view name);

template <class Generic>
std::string genericName(const Generic& capability) {
    const auto& identifier = capability.capabilityIdentifier;
    using Identifier = std::remove_cvref_t<decltype(identifier)>;
    if (identifier.t == Identifier::standard) return genericName(*identifier.u.standard);
    if constexpr (requires { Identifier::domainBased; })
        if (identifier.t == Identifier::domainBased) return identifier.u.domainBased;
    return chosenText(identifier);
}

template <class Audio>
std::string audioName(const Audio& audio) {
    if constexpr (requires { Audio::genericAudioCapability; })
        if (audio.t == Audio::genericAudioCapability)
            return genericName(*audio.u.genericAudioCapability);
    return shortName(chosenText(audio));
}

template <class Video>
std::string videoName(const Video& video) {
    if constexpr (requires { Video::genericVideoCapability; })
        if (video.t == Video::genericVideoCapability)
            return genericName(*video.u.genericVideoCapability);
    if constexpr (requires { Video::extendedVideoCapability; })
        if (video.t == Video::extendedVideoCapability &&
            video.u.extendedVideoCapability->videoCapability.n > 0)
            return videoName(video.u.extendedVideoCapability->videoCapability.elem[0]);
    return shortName(chosenText(video));
}

template <class Data>
std::string dataName(const Data& data) {
    using Application = std::remove_cvref_t<decltype(data.application)>;
    if constexpr (requires { Application::genericDataCapability; })
        if (data.application.t == Application::genericDataCapability)
            return genericName(*data.application.u.genericDataCapability);
    return chosenText(data.application);
}

/// The name of the media of a channel; of encrypted media, the name of what is encrypted.
template <class Type>
std::string mediaName(const Type& type) {
    if (type.t == Type::audioData) return audioName(*type.u.audioData);
    if (type.t == Type::videoData) return videoName(*type.u.videoData);
    if (type.t == Type::data) return dataName(*type.u.data);
    if constexpr (requires { Type::h235Media; })
        if (type.t == Type::h235Media) return mediaName(type.u.h235Media->mediaType);
    return chosenText(type);
}

/// The names of an endpoint's capabilities.
struct CapabilityNames {
    std::vector<std::string> media;
    std::vector<std::string> userInput;
};

/// Adds the name of a capability of media or user input, unless the list already has it.
template <class Capability>
void addCapability(const Capability& capability, CapabilityNames& names) {
    const auto& u = capability.u;
    std::string name;
    bool isInput = false;
    switch (capability.t) {
        case Capability::receiveVideoCapability:
        case Capability::transmitVideoCapability:
        case Capability::receiveAndTransmitVideoCapability:
            name = videoName(*u.receiveVideoCapability);
            break;
        case Capability::receiveAudioCapability:
        case Capability::transmitAudioCapability:
        case Capability::receiveAndTransmitAudioCapability:
            name = audioName(*u.receiveAudioCapability);
            break;
        case Capability::receiveDataApplicationCapability:
        case Capability::transmitDataApplicationCapability:
        case Capability::receiveAndTransmitDataApplicationCapability:
            name = dataName(*u.receiveDataApplicationCapability);
            break;
        case Capability::receiveUserInputCapability:
        case Capability::transmitUserInputCapability:
        case Capability::receiveAndTransmitUserInputCapability:
            name = chosenText(*u.receiveUserInputCapability);
            isInput = true;
            break;
        default:
            break;
    }
    if constexpr (requires { Capability::receiveRTPAudioTelephonyEventCapability; })
        if (capability.t == Capability::receiveRTPAudioTelephonyEventCapability) {
            name = "telephonyEvent";
            isInput = true;
        }
    std::vector<std::string>& list = isInput ? names.userInput : names.media;
    if (!name.empty() && std::find(list.begin(), list.end(), name) == list.end())
        list.push_back(std::move(name));
}
