<?php
// php client.php WSDL URL VERSION: calls what standard input asks for, a line each, and prints each answer.
[, $wsdl, $url, $version] = $argv;

$client = new SoapClient($wsdl, [
    'location' => $url,
    'soap_version' => $version === '1.2' ? SOAP_1_2 : SOAP_1_1,
    'features' => SOAP_SINGLE_ELEMENT_ARRAYS,
    'cache_wsdl' => WSDL_CACHE_NONE,
]);

function plain(object $answer): object
{
    if (isset($answer->profileList)) {
        $answer->profiles = array_map(
            fn($profile) => ['id' => $profile->id, 'name' => $profile->_, 'active' => $profile->active ?? false],
            $answer->profileList->profile ?? []
        );
    }
    if (isset($answer->behaviors)) {
        $answer->behaviors = array_map(
            fn($behavior) => ['type' => $behavior->type, 'availability' => $behavior->availability],
            $answer->behaviors->behavior ?? []
        );
    }
    unset($answer->profileList);
    return $answer;
}

while ($line = fgets(STDIN)) {
    [$operation, $parameters] = json_decode($line, true);
    try {
        $answer = ['result' => plain((object) $client->__soapCall($operation, [$parameters]))];
    } catch (SoapFault $fault) {
        $answer = ['code' => $fault->faultcode, 'fault' => $fault->getMessage()];
    }
    echo json_encode($answer, JSON_UNESCAPED_UNICODE), "\n";
}
