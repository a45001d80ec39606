#include "TlsTrouble.h"

#include "Access.h"

#include <openssl/x509v3.h>

#include <memory>
#include <utility>
#include <vector>

namespace client
{
namespace
{

// What was seen last on this thread.
struct Trouble
{
    int certificate = X509_V_OK;
    std::string names;  // for whom the certificate is
    std::string issuer; // who signed it
    std::string begins;
    std::string ends;
    int alert = -1; // what the service said of our side
};
thread_local Trouble gTrouble;

std::string Taken(BIO* memory)
{
    char* text = nullptr;
    const long size = BIO_get_mem_data(memory, &text);
    return size <= 0 ? "" : std::string(text, static_cast<std::size_t>(size));
}

using Memory = std::unique_ptr<BIO, int (*)(BIO*)>;
Memory NewMemory() { return {BIO_new(BIO_s_mem()), BIO_free}; }

std::string Time(const ASN1_TIME* time)
{
    const Memory memory = NewMemory();
    ASN1_TIME_print(memory.get(), time);
    return Taken(memory.get());
}

std::string Name(const X509_NAME* name)
{
    const Memory memory = NewMemory();
    X509_NAME_print_ex(memory.get(), name, 0, XN_FLAG_ONELINE & ~ASN1_STRFLGS_ESC_MSB);
    return Taken(memory.get());
}

std::string Address(const ASN1_OCTET_STRING* address)
{
    const unsigned char* const bytes = ASN1_STRING_get0_data(address);
    if (ASN1_STRING_length(address) != 4)
        return "an IPv6 address";
    std::string text;
    for (int i = 0; i < 4; ++i)
        text += (i == 0 ? "" : ".") + std::to_string(bytes[i]);
    return text;
}

// The names that stand in it, else its subject.
std::string NamesOf(X509* certificate)
{
    std::string names;
    const std::unique_ptr<GENERAL_NAMES, void (*)(GENERAL_NAMES*)> list(
        static_cast<GENERAL_NAMES*>(X509_get_ext_d2i(certificate, NID_subject_alt_name, nullptr, nullptr)),
        GENERAL_NAMES_free);
    for (int i = 0; list != nullptr && i < sk_GENERAL_NAME_num(list.get()); ++i)
    {
        const GENERAL_NAME* const name = sk_GENERAL_NAME_value(list.get(), i);
        const std::string front = names.empty() ? "" : ", ";
        if (name->type == GEN_DNS)
            names += front + reinterpret_cast<const char*>(ASN1_STRING_get0_data(name->d.dNSName));
        else if (name->type == GEN_IPADD)
            names += front + Address(name->d.iPAddress);
    }
    return names.empty() ? Name(X509_get_subject_name(certificate)) : names;
}

void RememberAlert(const SSL* /*ssl*/, int where, int value)
{
    constexpr int kDescription = 0xFF;
    if ((where & SSL_CB_READ_ALERT) != 0 && (value & kDescription) != SSL_AD_CLOSE_NOTIFY)
        gTrouble.alert = value & kDescription;
}

std::string OfServer(const Trouble& trouble, const std::string& url)
{
    const std::string front = "The certificate of " + url + " isn't trusted: ";
    switch (trouble.certificate)
    {
    case X509_V_ERR_CERT_HAS_EXPIRED:
        return front + "it has expired since " + trouble.ends +
               ". Renew it at the service; look at the clock here as well.";
    case X509_V_ERR_CERT_NOT_YET_VALID:
        return front + "it isn't valid before " + trouble.begins +
               ". Look at the clocks of the service and of this machine.";
    case X509_V_ERR_HOSTNAME_MISMATCH:
    case X509_V_ERR_IP_ADDRESS_MISMATCH:
        return front + "it is for " + trouble.names + ", not for " + HostOf(url) +
               ". Use the address that it is for, or give the service a certificate for this one.";
    case X509_V_ERR_CERT_REVOKED:
        return front + "it has been revoked by " + trouble.issuer + ". Give the service another certificate.";
    case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
        return front + "it is signed by itself, and it isn't among the authorities here. If it is the right "
                       "one, name its file with --cacert.";
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
    case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
    case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
    case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
        return front + "its authority is unknown here: " + trouble.issuer +
               ". Name the file of that authority with --cacert.";
    default:
        return front + X509_verify_cert_error_string(trouble.certificate) +
               ". Look at it with 'openssl s_client', and at the authorities of --cacert.";
    }
}

struct Alert
{
    int number;
    const char* sentence;
};
constexpr Alert kAlerts[] = {
    {SSL_AD_CERTIFICATE_EXPIRED, "our certificate has expired. Renew it and name the new one with --cert"},
    {SSL_AD_CERTIFICATE_REVOKED,
     "our certificate has been revoked. Ask for another one and name it with --cert"},
    {SSL_AD_UNKNOWN_CA,
     "it doesn't know the authority of our certificate. Name one of an authority that it knows with --cert"},
    {SSL_AD_CERTIFICATE_UNKNOWN, "our certificate is none that it takes. Name another one with --cert"},
    {SSL_AD_BAD_CERTIFICATE, "our certificate is broken or none that it takes. Name another one with --cert"},
    {SSL_AD_UNSUPPORTED_CERTIFICATE, "our certificate isn't one for clients. Name another one with --cert"},
    {SSL_AD_CERTIFICATE_REQUIRED, "it wants a certificate of ours. Name it with --cert"},
    {SSL_AD_PROTOCOL_VERSION,
     "it has no version of TLS that is good enough: 1.2 or 1.3 is needed. Look at its settings"},
    {SSL_AD_UNRECOGNIZED_NAME, "it doesn't go by this name. Look at the address (--url)"},
};

} // namespace

int RememberCertificate(int verdict, X509_STORE_CTX* store)
{
    // Of an authority without a list of revoked certificates all of them are good.
    if (verdict == 0 && X509_STORE_CTX_get_error(store) == X509_V_ERR_UNABLE_TO_GET_CRL)
    {
        X509_STORE_CTX_set_error(store, X509_V_OK);
        return 1;
    }
    if (verdict != 0)
        return verdict;
    X509* const certificate = X509_STORE_CTX_get_current_cert(store);
    gTrouble.certificate = X509_STORE_CTX_get_error(store);
    if (certificate != nullptr)
    {
        gTrouble.names = NamesOf(certificate);
        gTrouble.issuer = Name(X509_get_issuer_name(certificate));
        gTrouble.begins = Time(X509_get0_notBefore(certificate));
        gTrouble.ends = Time(X509_get0_notAfter(certificate));
    }
    return 0;
}

void RememberTrouble(SSL_CTX* context)
{
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, RememberCertificate);
    SSL_CTX_set_info_callback(context, RememberAlert);
}

std::string TakeTlsTrouble(const std::string& url)
{
    const Trouble trouble = std::exchange(gTrouble, {});
    if (trouble.certificate != X509_V_OK)
        return OfServer(trouble, url);
    const std::string front = "The service at " + url + " refuses the connection: ";
    for (const Alert& alert : kAlerts)
        if (alert.number == trouble.alert)
            return front + alert.sentence + ".";
    return "";
}

} // namespace client
