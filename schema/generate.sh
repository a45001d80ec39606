#!/bin/sh
# Runs gSOAP's generator and finishes its output.
#
#   generate.sh INPUT.h OUTPUT_FOLDER
#
# Leaves in OUTPUT_FOLDER the serialisers, the dispatcher and the calls of a client (soapStub.h, soapH.h,
# soapC.cpp, soapServer.cpp, soapClient.cpp, VideoAnalytics.nsmap), VideoAnalytics.wsdl and VideoAnalytics.xsd.
set -eu
input=$1
out=$2
import=/usr/share/gsoap/import

rm -rf "$out/soap12"
mkdir -p "$out/soap12"
# The generator writes the time into what it makes: always the same (0 counts as none), unless a release names its own.
export SOURCE_DATE_EPOCH="${SOURCE_DATE_EPOCH-1}"
# The generator says much on success; what it says is wanted only when it fails.
generate() { soapcpp2 -L -x -c++11 "$@" "$input" >"$out/soapcpp2.log" 2>&1 || { cat "$out/soapcpp2.log" >&2; exit 1; }; }
generate -2 -I "$import" -d "$out/soap12"
generate -I "$import" -d "$out"

# edit FILE LINES EXPRESSION: lets sed edit a file. LINES counts the lines that go and those that come; with any
# other number the generator's output isn't what the expression was written for.
edit() {
    sed -E "$3" "$out/$1" >"$out/edited"
    lines=$(diff "$out/$1" "$out/edited" | grep -c '^[<>]') || true
    if [ "$lines" -ne "$2" ]; then
        echo "generate.sh: $lines lines of $1 go or come, and not $2, by: $3" >&2
        exit 1
    fi
    mv "$out/edited" "$out/$1"
}

# 1. Types. The generator leaves out xsi:type where the object is of exactly the declared class, and
#    its option -t adds it to every simple element as well. Clients get it on each element of a class
#    that is derived from xsd__anyType, and on nothing else: a null type makes the class write its own.
#    The classes outside that tree have names with a leading underscore, or are never pointed to.
edit soapC.cpp 16 's/\(\*a\)->soap_type\(\) == SOAP_TYPE_VideoAnalytics__[A-Za-z0-9_]+ \? type : NULL/NULL/'
# 2. Unknown content. What a derived class has kept in xsd__anyType::__item isn't written back.
edit soapC.cpp 24 '/soap_outliteral\(soap, "-item", .*a->xsd__anyType::__item, NULL\)\)$/{N;d;}'
# 3. Numbers. An enumeration takes any integer, as the schema's readers always have; the generator
#    tests the range. Only a type of a fixed size can hold one. A required attribute that is empty isn't written.
edit soapC.cpp 18 's/(soap_s2int\(soap, s, &n\)) \|\| n < 0 \|\| n > [0-9]+/\1/'
edit soapStub.h 18 's/^enum (VideoAnalytics__[A-Za-z]+) \{$/enum \1 : int {/'
edit soapC.cpp 3 's/^(\t*)(soap_set_attr\(soap, "transmission", .*)$/\1if (!a->VideoAnalytics__MetadataURL::transmission.empty())\n\1\t\2/'

# 4. Messages that end too early. gSOAP closes the connection without a word when the input ends within
#    a message; the sender is to be told that it is broken. Only the reading changes: an operation that
#    returns the end-of-file status still ends without an answer, and so does a silent client.
edit soapServer.cpp 2 's/soap_begin_serve\(soap\)/soap_begin_message(soap)/'
edit soapServer.cpp 32 '/soap_get___VideoAnalytics__/{n;s/soap->error/soap_message_error(soap)/;}'
edit soapServer.cpp 32 '/soap_end_recv\(soap\)\)/{n;s/soap->error/soap_message_error(soap)/;}'
#    An operation whose element says xsi:nil, as some clients write one without fields, arrives as no
#    request at all; it gets one with every field at its default.
edit soapServer.cpp 96 's/^\tsoap->error = __VideoAnalytics__([A-Za-z0-9]+)\(soap, ([^,]+), &.*/\tif (!\2)\n\t{\t\2 = soap_new__VideoAnalytics__\1(soap);\n\t\tif (!\2)\n\t\t\treturn soap->error;\n\t\t\2->soap_default(soap);\n\t}\n&/'
#    And envelopes of other versions than those of SOAP, which it would answer with what is no SOAP.
cat >"$out/begin.cpp" <<'END'
#include "Answer.h"

static int soap_message_error(struct soap *soap)
{
	/* A body without any element leaves the code of the HTTP method. */
	if (soap->error == SOAP_EOF || (soap->status && soap->error == soap->status))
		soap->error = SOAP_SYNTAX_ERROR;
	return soap->error;
}

static int soap_envelope_is_known(struct soap *soap)
{
	/* A namespace that resembles that of SOAP 1.2 leaves no version. */
	return soap->version ? SOAP_OK : (soap->error = SOAP_VERSIONMISMATCH);
}

static int soap_begin_message(struct soap *soap)
{
	int unread;
	soap_begin(soap);
	unread = soap_begin_recv(soap);
	/* The answer has the request's version of HTTP; the line that says it gives way to the text of a fault. */
	if (strstr(soap->msgbuf, " HTTP/1.0"))
		soap->http_version = "1.0";
	if (!unread)
	{	if (!soap_envelope_begin_in(soap) && !soap_envelope_is_known(soap) && !soap_recv_header(soap) && !soap_body_begin_in(soap))
			return SOAP_OK;
		soap_message_error(soap);
		soap_mend_answer(soap);
	}
	return soap->error < SOAP_STOP ? soap_send_fault(soap) : soap_closesock(soap);
}
END
edit soapServer.cpp 32 "/#include \"soapH.h\"/r $out/begin.cpp"

# 5. What the answer quotes of the message: names in faults, namespaces. It comes in whatever bytes.
edit soapC.cpp 1 's/#include "soapH.h"/&\n#include "Answer.h"/'
edit soapC.cpp 2 '/SOAP_FMAC4 soap_serializeheader\(struct soap \*soap\)$/{n;s/\{/{\tsoap_mend_answer(soap);/;}'

# 6. Schema. The polymorphic wrappers (C++ names with a trailing underscore) repeat the names of the
#    simple types that they wrap, which no validator accepts; they are no types of the schema.
#    'mixed' says nothing on simple content, and some tools refuse it. Nothing of the encoding's
#    namespace is used, and its import would send a tool to look for it.
for file in VideoAnalytics.xsd VideoAnalytics.wsdl
do
    edit $file 66 '/<complexType name="[A-Za-z0-9]+"><!-- VideoAnalytics__[A-Za-z0-9]+_+ -->/,/<\/complexType>/d'
    edit $file 4 's/ mixed="true"//'
    edit $file 1 '/<import namespace="http:\/\/schemas.xmlsoap.org\/soap\/encoding\/"\/>/d'
done

# 7. Both SOAP versions in one WSDL: the generator writes one binding a run.
sed -n '/<binding /,/<\/binding>/p' "$out/soap12/VideoAnalytics.wsdl" |
    sed -e 's/<binding name="VideoAnalytics"/<binding name="VideoAnalyticsSoap12"/' \
        -e 's/<\(\/*\)SOAP:/<\1SOAP12:/g' >"$out/soap12/binding.xml"
sed -n '/<port /,/<\/port>/p' "$out/soap12/VideoAnalytics.wsdl" |
    sed -e 's/name="VideoAnalytics"/name="VideoAnalyticsSoap12"/' \
        -e 's/binding="tns:VideoAnalytics"/binding="tns:VideoAnalyticsSoap12"/' \
        -e 's/<SOAP:/<SOAP12:/' >"$out/soap12/port.xml"
edit VideoAnalytics.wsdl 1 's|^  xmlns:SOAP="http://schemas.xmlsoap.org/wsdl/soap/"|&\n  xmlns:SOAP12="http://schemas.xmlsoap.org/wsdl/soap12/"|'
edit VideoAnalytics.wsdl 147 "/<\/binding>/r $out/soap12/binding.xml"
edit VideoAnalytics.wsdl 3 "/<\/port>/r $out/soap12/port.xml"
rm -rf "$out/soap12" "$out/begin.cpp"
