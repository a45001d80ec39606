// What the page asks of the program.

export class Refused extends Error {
    constructor(status, answer) {
        super(answer.error);
        this.status = status;
        this.answer = answer;
    }
}

async function ask(path, options) {
    let response;
    try {
        response = await fetch(path, options);
    } catch {
        throw new Refused(0, { error: 'The console has ended. Start it again; what is drawn here stays until this page is closed.' });
    }
    if (response.ok && path === 'picture') return response.blob();
    const type = response.headers.get('Content-Type') ?? '';
    const answer = type.startsWith('application/json') ? await response.json() : { error: await response.text() };
    if (!response.ok) throw new Refused(response.status, answer);
    return answer;
}

export const read = (what, parameters = {}) => ask(`api/${what}?${new URLSearchParams(parameters)}`);

export const send = (what, body) => ask(`api/${what}`, {
    method: 'POST', headers: { 'Content-Type': 'application/json' }, body: JSON.stringify(body),
});

export const picture = () => ask('picture', {});
