"""python3 client.py WSDL URL VERSION: calls what standard input asks for, a line each, and prints each answer."""

import json
import sys

import zeep
import zeep.exceptions

wsdl, url, version = sys.argv[1:]
binding = {"1.1": "VideoAnalytics", "1.2": "VideoAnalyticsSoap12"}[version]
service = zeep.Client(wsdl).create_service(f"{{urn:schemas-varlo-com:service:VideoAnalytics:2}}{binding}", url)

FIELDS = {"CreateProfile": "profileId", "GetActiveProfile": "profileId", "GetDefaultConfiguration": "config",
          "GetProfileBehavior": "config", "GetDefaultScene": "scene", "GetProfileScene": "scene"}


def plain(operation, answer):
    """zeep hands the one field of an answer out as the answer itself."""
    if operation == "GetProfileList":
        return {"profiles": [{"id": p.id, "name": p._value_1, "active": bool(p.active)} for p in answer or []]}
    if operation.startswith("GetBehaviorAvailability"):
        return {"behaviors": [{"type": b.type, "availability": b.availability} for b in answer.behavior]}
    return {FIELDS[operation]: answer} if operation in FIELDS else {}


for line in sys.stdin:
    operation, parameters = json.loads(line)
    try:
        answer = {"result": plain(operation, service[operation](**parameters))}
    except zeep.exceptions.Fault as fault:
        answer = {"code": fault.code, "fault": fault.message}
    print(json.dumps(answer), flush=True)
