// Secure fuses, credentials, EAROM, chip identity and message signing.
#include "Application.h"

#include <array>
#include <cstdint>

#include "EntryGuard.h"
#include "StatusCodes.h"
#include "SysctrlLog.h"
#include "zo/port/CredentialsState.h"
#include "zo/port/Factory.h"
#include "zo/port/FactoryManager.h"
#include "zo/port/HardwareInfo.h"
#include "zo/port/Signer.h"
#include "zo/port/VodState.h"

namespace sysctrlservice {

namespace {

// The credentials mode that deletes instead of rewriting.
const int kDeleteCredentialsMode = 1;

// The signature buffer handed to the signer; a longer signature cannot be asked for.
const unsigned int kSignatureCapacity = 256;
// The key the signer uses for the YouTube application.
const int kYouTubeSigningKey = 0;

// What the credentials-state object reports, as the fuse report names it. Any other state repeats
// the value of the item before it (the last fuse item's), as the report has always done.
std::string credentialsInstalled(const boost::shared_ptr<zo::port::CredentialsState>& credentials,
                                 const std::vector<fuseitemcontent1_t>& report) {
    const int state = credentials ? credentials->getCredentialsState() : -1;
    switch (state) {
        case 0:
            return "PRODUCTION";
        case 1:
            return "TEST";
        case -1:
            return "NO";
        default:
            return report.empty() ? std::string() : report.back().value;
    }
}

std::string vodEnabled(const boost::shared_ptr<zo::port::VodState>& vod) {
    return vod && vod->isVodEnabled() != 0 ? "YES" : "NO";
}

}  // namespace

int Application::burnFuses(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                           const std::vector<fuseitemcontent1_t>& items) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");

    std::vector<zo::port::secfuseitem> fuses;
    fuses.reserve(items.size());
    for (const fuseitemcontent1_t& item : items) {
        fuses.push_back(zo::port::secfuseitem{item.name, item.value});
    }

    int code = 0;
    if (!m_factoryManager) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Factorymanager not available.\n");
        code = kStatusConnectionRefused;
    } else if (!m_factoryManager->burnSecureFuses(fuses)) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Error while burning fuses.\n");
        code = kStatusIoError;
    }
    deliverToClients(&ClientInterface::burnFusesResult, msgIds, transport, code);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::requestFuseInfo(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                 unsigned int selector) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");

    std::vector<fuseitemcontent1_t> report;
    if (m_factoryManager) {
        std::vector<zo::port::secfuseitem> fuses;
        if (!m_factoryManager->getSecureFuses(fuses, selector)) {
            SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Error while fetching fuse data.\n");
        }
        // A failed fetch may still have delivered items; they are reported too.
        report.reserve(fuses.size() + 2);
        for (const zo::port::secfuseitem& fuse : fuses) {
            report.push_back(fuseitemcontent1_t{fuse.name, fuse.value});
        }
    } else {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Factorymanager not available.\n");
    }

    const std::string credentials = credentialsInstalled(m_credentialsState, report);
    report.push_back(fuseitemcontent1_t{"CredentialsInstalled", credentials});
    report.push_back(fuseitemcontent1_t{"VodEnabled", vodEnabled(m_vodState)});

    deliverToClients(&ClientInterface::requestFuseInfoResult, msgIds, transport, report);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::reinitCredentials(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                   int mode) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");

    int code = 0;
    if (!m_factoryManager) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Factorymanager not available.\n");
        code = kStatusConnectionRefused;
    } else if (mode == kDeleteCredentialsMode) {
        if (!m_factoryManager->deleteCredentials(kDeleteCredentialsMode)) {
            SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Error in delete of credentials.\n");
            code = kStatusAccessDenied;
        }
    } else if (!m_factoryManager->rewriteCredentials(mode)) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): Error in rewrite of credentials.\n");
        code = kStatusIoError;
    }
    deliverToClients(&ClientInterface::reinitCredentialsResult, msgIds, transport, code);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

// The EAROM operations hand the platform's text through untouched, also when it failed: the
// caller gets whatever the manager left (usually nothing). A set without a factory manager
// answers as a failed call does.

int Application::readEarom(frame::MsgIds& msgIds, const frame::TransportInfo& transport, int offset,
                           unsigned int length) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string data;
    if (!m_factoryManager || !m_factoryManager->readEaromBlock(offset, length, data)) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
    }
    deliverToClients(&ClientInterface::readEaromResult, msgIds, transport, data);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::writeEarom(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                            int offset, const std::string& data) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string result;
    if (!m_factoryManager || !m_factoryManager->writeEaromBlock(offset, data, result)) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
    }
    deliverToClients(&ClientInterface::writeEaromResult, msgIds, transport, result);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::getEaromSize(frame::MsgIds& msgIds, const frame::TransportInfo& transport) try {
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): Called.\n");
    std::string size;
    if (!m_factoryManager || !m_factoryManager->queryEaromSize(size)) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): failed.\n");
    }
    deliverToClients(&ClientInterface::getEaromSizeResult, msgIds, transport, size);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::getChipID(frame::MsgIds& msgIds, const frame::TransportInfo& transport) try {
    const boost::shared_ptr<zo::port::HardwareInfo> hardware =
        portObject(&zo::port::Factory::getHardwareInfo);
    std::string chipId;
    if (hardware) {
        const int result = hardware->getChipId(chipId);
        if (result != 0) {
            SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): ZAM get chip id failed , ret = %d.\n", result);
        }
    }
    deliverToClients(&ClientInterface::getChipIDResult, msgIds, transport, chipId);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

int Application::getYTSignature(frame::MsgIds& msgIds, const frame::TransportInfo& transport,
                                const std::string& message, unsigned int /*reserved*/,
                                unsigned int signatureLength) try {
    if (!m_factory) {
        return kStatusFailed;
    }
    if (message.empty()) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): param message must not null, please check.\n");
        return kStatusFailed;
    }
    const boost::shared_ptr<zo::port::Signer> signer = portObject(&zo::port::Factory::getSigner);
    if (!signer) {
        return kStatusFailed;
    }
    // The text says "expect <" but a signature of exactly the buffer's size is accepted; both are
    // kept as callers know them.
    if (signatureLength > kSignatureCapacity) {
        SYSCTRL_LOG(LOG_PORT_ERROR,
                    "%s:%d:%s(): ZAM get youtube signature success , but signature size is too "
                    "biger, expect < %d,actual len:%d.\n",
                    kSignatureCapacity, signatureLength);
        return kStatusFailed;
    }

    std::array<uint8_t, kSignatureCapacity> signature{};
    const int result = signer->signMessage(
        kYouTubeSigningKey, reinterpret_cast<const uint8_t*>(message.data()),
        static_cast<uint32_t>(message.size()), signature.data(), signatureLength);
    if (result != 0) {
        SYSCTRL_LOG(LOG_PORT_ERROR, "%s:%d:%s(): ZAM get youtube signature failed , ret = %d.\n",
                    result);
        return kStatusFailed;
    }
    SYSCTRL_LOG(LOG_TRACE, "%s:%d:%s(): ZAM get youtube signature value successfully\n");

    // Raw bytes, zero bytes included: the signature is not text.
    const std::string bytes(reinterpret_cast<const char*>(signature.data()), signatureLength);
    deliverToClients(&ClientInterface::getYTSignatureResult, msgIds, transport, bytes);
    return 0;
}
SYSCTRL_ENTRY_GUARD(kStatusFailed)

}  // namespace sysctrlservice
