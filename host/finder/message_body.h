// Calls a function with the body of a message, which is the chosen alternative of a CHOICE, for the
// types of both sets of modules.
#pragma once

#include <type_traits>

#define TAMSEL_BODY(Choice, alternative) \
    case Choice::alternative:            \
        visit(*u.alternative);           \
        break;

/// Calls `visit` with the body of a RasMessage, unless the modules do not know its alternative.
template <class Ras, class Visit>
void visitRas(const Ras& message, Visit visit) {
    const auto& u = message.u;
    switch (message.t) {
        TAMSEL_BODY(Ras, gatekeeperRequest)
        TAMSEL_BODY(Ras, gatekeeperConfirm)
        TAMSEL_BODY(Ras, gatekeeperReject)
        TAMSEL_BODY(Ras, registrationRequest)
        TAMSEL_BODY(Ras, registrationConfirm)
        TAMSEL_BODY(Ras, registrationReject)
        TAMSEL_BODY(Ras, unregistrationRequest)
        TAMSEL_BODY(Ras, unregistrationConfirm)
        TAMSEL_BODY(Ras, unregistrationReject)
        TAMSEL_BODY(Ras, admissionRequest)
        TAMSEL_BODY(Ras, admissionConfirm)
        TAMSEL_BODY(Ras, admissionReject)
        TAMSEL_BODY(Ras, bandwidthRequest)
        TAMSEL_BODY(Ras, bandwidthConfirm)
        TAMSEL_BODY(Ras, bandwidthReject)
        TAMSEL_BODY(Ras, disengageRequest)
        TAMSEL_BODY(Ras, disengageConfirm)
        TAMSEL_BODY(Ras, disengageReject)
        TAMSEL_BODY(Ras, locationRequest)
        TAMSEL_BODY(Ras, locationConfirm)
        TAMSEL_BODY(Ras, locationReject)
        TAMSEL_BODY(Ras, infoRequest)
        TAMSEL_BODY(Ras, infoRequestResponse)
        TAMSEL_BODY(Ras, nonStandardMessage)
        TAMSEL_BODY(Ras, unknownMessageResponse)
        TAMSEL_BODY(Ras, requestInProgress)
        TAMSEL_BODY(Ras, resourcesAvailableIndicate)
        TAMSEL_BODY(Ras, resourcesAvailableConfirm)
        TAMSEL_BODY(Ras, infoRequestAck)
        TAMSEL_BODY(Ras, infoRequestNak)
        default:
            break;
    }
    if constexpr (requires { Ras::serviceControlIndication; }) switch (message.t) {
            TAMSEL_BODY(Ras, serviceControlIndication)
            TAMSEL_BODY(Ras, serviceControlResponse)
            default:
                break;
        }
}

/// The same with the body of an H323-UserInformation.
template <class Ui, class Visit>
void visitUi(const Ui& message, Visit visit) {
    using Chosen = std::remove_cvref_t<decltype(message.h323_uu_pdu.h323_message_body)>;
    const auto& u = message.h323_uu_pdu.h323_message_body.u;
    switch (message.h323_uu_pdu.h323_message_body.t) {
        TAMSEL_BODY(Chosen, setup)
        TAMSEL_BODY(Chosen, callProceeding)
        TAMSEL_BODY(Chosen, connect)
        TAMSEL_BODY(Chosen, alerting)
        TAMSEL_BODY(Chosen, information)
        TAMSEL_BODY(Chosen, releaseComplete)
        TAMSEL_BODY(Chosen, facility)
        TAMSEL_BODY(Chosen, progress)
        default:
            break;
    }
    if constexpr (requires { Chosen::statusInquiry; })
        switch (message.h323_uu_pdu.h323_message_body.t) {
            TAMSEL_BODY(Chosen, status)
            TAMSEL_BODY(Chosen, statusInquiry)
            TAMSEL_BODY(Chosen, setupAcknowledge)
            TAMSEL_BODY(Chosen, notify)
            default:
                break;
        }
}

#undef TAMSEL_BODY
