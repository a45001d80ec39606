// node client.js WSDL URL VERSION: calls what standard input asks for, a line each, and prints each answer.
const soap = require('soap');
const readline = require('readline');

const [wsdl, url, version] = process.argv.slice(2);

function plain({ profileList, behaviors, ...values }) {
    if (profileList !== undefined)
        values.profiles = (profileList?.profile ?? []).map(profile => ({
            id: profile.attributes.id, name: profile.$value, active: profile.attributes.active === 'true',
        }));
    if (behaviors !== undefined)
        values.behaviors = (behaviors.behavior ?? []).map(({ type, availability }) => ({ type, availability }));
    return values;
}

async function call(client, operation, parameters) {
    try {
        const [answer] = await client[`${operation}Async`](parameters);
        return { result: plain(answer ?? {}) };
    } catch (error) {
        const fault = error.root?.Envelope?.Body?.Fault;
        if (!fault)
            throw error;
        return version === '1.2'
            ? { code: fault.Code.Value, fault: fault.Reason.Text.$value ?? fault.Reason.Text }
            : { code: fault.faultcode, fault: fault.faultstring };
    }
}

(async () => {
    const client = await soap.createClientAsync(wsdl, { endpoint: url, forceSoap12Headers: version === '1.2' });
    for await (const line of readline.createInterface({ input: process.stdin }))
        console.log(JSON.stringify(await call(client, ...JSON.parse(line))));
})();
