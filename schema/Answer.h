#pragma once

struct soap;

// The generated code calls it before an answer is written. What the answer would quote of the message
// becomes text that XML can hold: in the fault, '?' takes the place of what isn't, and its detail is text.
// The namespaces are ours but for those of SOAP 1.2, a message of no known version is answered in SOAP 1.1,
// and one in DIME in plain XML.
void soap_mend_answer(soap* soap);
