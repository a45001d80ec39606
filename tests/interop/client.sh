#!/bin/bash
# bash client.sh WSDL URL VERSION: posts each line of standard input, the element of a call, and prints the answer.
url=$2
if [ "$3" = 1.2 ]
then
    space=http://www.w3.org/2003/05/soap-envelope type=application/soap+xml
else
    space=http://schemas.xmlsoap.org/soap/envelope/ type=text/xml
fi
while read -r element
do
    curl -sS --max-time 60 -H "Content-Type: $type; charset=utf-8" --data-binary @- "$url" <<END | tr '\r\n' '  '
<Envelope xmlns="$space"><Body>$element</Body></Envelope>
END
    echo
done
