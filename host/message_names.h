// The names of messages: the alternatives of the CHOICEs that tell messages apart, in order.
#pragma once

#include <span>
#include <string_view>

using Names = std::span<const std::string_view>;

constexpr std::string_view kRasNames[] = {"gatekeeperRequest",
                                          "gatekeeperConfirm",
                                          "gatekeeperReject",
                                          "registrationRequest",
                                          "registrationConfirm",
                                          "registrationReject",
                                          "unregistrationRequest",
                                          "unregistrationConfirm",
                                          "unregistrationReject",
                                          "admissionRequest",
                                          "admissionConfirm",
                                          "admissionReject",
                                          "bandwidthRequest",
                                          "bandwidthConfirm",
                                          "bandwidthReject",
                                          "disengageRequest",
                                          "disengageConfirm",
                                          "disengageReject",
                                          "locationRequest",
                                          "locationConfirm",
                                          "locationReject",
                                          "infoRequest",
                                          "infoRequestResponse",
                                          "nonStandardMessage",
                                          "unknownMessageResponse",
                                          "requestInProgress",
                                          "resourcesAvailableIndicate",
                                          "resourcesAvailableConfirm",
                                          "infoRequestAck",
                                          "infoRequestNak"};

constexpr std::string_view kUiNames[] = {"setup",    "callProceeding", "connect",
                                         "alerting", "information",    "releaseComplete",
                                         "facility", "progress",       "empty"};

constexpr std::string_view kRequestNames[] = {
    "nonStandard",           "masterSlaveDetermination", "terminalCapabilitySet",
    "openLogicalChannel",    "closeLogicalChannel",      "requestChannelClose",
    "multiplexEntrySend",    "requestMultiplexEntry",    "requestMode",
    "roundTripDelayRequest", "maintenanceLoopRequest",   "communicationModeRequest",
    "conferenceRequest"};

constexpr std::string_view kResponseNames[] = {"nonStandard",
                                               "masterSlaveDeterminationAck",
                                               "masterSlaveDeterminationReject",
                                               "terminalCapabilitySetAck",
                                               "terminalCapabilitySetReject",
                                               "openLogicalChannelAck",
                                               "openLogicalChannelReject",
                                               "closeLogicalChannelAck",
                                               "requestChannelCloseAck",
                                               "requestChannelCloseReject",
                                               "multiplexEntrySendAck",
                                               "multiplexEntrySendReject",
                                               "requestMultiplexEntryAck",
                                               "requestMultiplexEntryReject",
                                               "requestModeAck",
                                               "requestModeReject",
                                               "roundTripDelayResponse",
                                               "maintenanceLoopAck",
                                               "maintenanceLoopReject",
                                               "communicationModeResponse",
                                               "conferenceResponse"};

constexpr std::string_view kCommandNames[] = {"nonStandard",
                                              "maintenanceLoopOffCommand",
                                              "sendTerminalCapabilitySet",
                                              "encryptionCommand",
                                              "flowControlCommand",
                                              "endSessionCommand",
                                              "miscellaneousCommand",
                                              "communicationModeCommand",
                                              "conferenceCommand",
                                              "h223MultiplexReconfiguration"};

constexpr std::string_view kIndicationNames[] = {"nonStandard",
                                                 "functionNotUnderstood",
                                                 "masterSlaveDeterminationRelease",
                                                 "terminalCapabilitySetRelease",
                                                 "openLogicalChannelConfirm",
                                                 "requestChannelCloseRelease",
                                                 "multiplexEntrySendRelease",
                                                 "requestMultiplexEntryRelease",
                                                 "requestModeRelease",
                                                 "miscellaneousIndication",
                                                 "jitterIndication",
                                                 "h223SkewIndication",
                                                 "newATMVCIndication",
                                                 "userInput",
                                                 "h2250MaximumSkewIndication",
                                                 "mcLocationIndication",
                                                 "conferenceIndication",
                                                 "vendorIdentification",
                                                 "functionNotSupported"};
