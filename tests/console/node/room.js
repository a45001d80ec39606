// What the tests of the page run against: services, consoles and a browser, all of their own.

import { spawn } from 'node:child_process';
import { cpSync, mkdirSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import puppeteer from 'puppeteer-core';

const { HOST, LIBRARY, CLIENT, DATA, SOURCE, BUILD } = process.env;
export const PICTURE = join(SOURCE, 'docs/pictures/car-park.png');
export const MANUAL = join(SOURCE, 'docs/pictures/console.png');
export const SHOTS = join(BUILD, 'tests/console/screenshots');
mkdirSync(SHOTS, { recursive: true });

const folder = () => mkdtempSync(join(tmpdir(), 'varlo-console-'));

// A process, and what it says first on the stream that matches.
function begin(program, args, stream, pattern) {
    const child = spawn(program, args, { stdio: ['ignore', 'pipe', 'pipe'] });
    const ended = new Promise(resolve => child.on('exit', resolve));
    const said = new Promise((resolve, reject) => {
        let text = '';
        for (const one of ['stdout', 'stderr'])
            child[one].on('data', data => {
                text += data;
                const match = pattern.exec(text);
                if (match) resolve(match);
            });
        ended.then(code => reject(new Error(`${program} ended with ${code}: ${text}`)));
    });
    const stop = async () => {
        child.kill('SIGTERM');
        return ended;
    };
    return { said, stop };
}

// The service with the delivered plug-ins, on a free port that it keeps when it is started again.
export class Service {
    constructor() {
        this.folder = folder();
        this.port = 0;
        cpSync(join(DATA, 'settings.xml'), join(this.folder, 'settings.xml'));
    }

    async start() {
        const args = ['--library', LIBRARY, '--settings', join(this.folder, 'settings.xml'), '--plugins', join(DATA, 'plugins'),
            '--state', join(this.folder, 'state'), '--listen', `127.0.0.1:${this.port}`];
        this.process = begin(HOST, args, 'stderr', /listening on http:\/\/127\.0\.0\.1:(\d+)\//);
        this.port = Number((await this.process.said)[1]);
        return this;
    }

    get url() {
        return `http://127.0.0.1:${this.port}/`;
    }

    stop() {
        return this.process.stop();
    }

    async clean() {
        await this.stop();
        rmSync(this.folder, { recursive: true, force: true });
    }

    // Calls an operation; `fields` are its parameters. Returns the element's text by the name `wanted`.
    async call(operation, fields = {}, wanted = null) {
        const escaped = value => String(value).replace(/[&<>]/g, one => `&#${one.charCodeAt(0)};`);
        const inner = Object.entries(fields).map(([name, value]) => `<${name}>${escaped(value)}</${name}>`).join('');
        const answer = await fetch(this.url, {
            method: 'POST', headers: { 'Content-Type': 'text/xml; charset=utf-8' },
            body: `<s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/"><s:Body><v:${operation} xmlns:v="urn:schemas-varlo-com:service:VideoAnalytics:2">${inner}</v:${operation}></s:Body></s:Envelope>`,
        });
        const text = await answer.text();
        if (!answer.ok) throw new Error(text);
        if (!wanted) return text;
        const found = new RegExp(`<${wanted}[^>]*>([^]*?)</${wanted}>`).exec(text);
        const names = { lt: '<', gt: '>', amp: '&', quot: '"', apos: "'" };
        return (found?.[1] ?? '').replace(/&(#x?[\da-fA-F]+|\w+);/g, (_, name) =>
            (name[0] === '#' ? String.fromCodePoint(Number(`0${name.slice(1)}`)) : names[name]));
    }

    behavior(profile, id) {
        return this.call('GetProfileBehavior', { profileId: profile, behaviorId: id }, 'config');
    }

    scene(profile) {
        return this.call('GetProfileScene', { profileId: profile }, 'scene');
    }

    async create(name) {
        return Number(await this.call('CreateProfile', { name }, 'profileId'));
    }
}

export async function startConsole(args) {
    const process = begin(CLIENT, ['console', ...args], 'stdout', /console on (http:\/\/127\.0\.0\.1:\d+\/\?token=\w+)\n/);
    return { url: (await process.said)[1], stop: process.stop };
}

// Debian's browsers: one speaks its own protocol with the tests, the other WebDriver BiDi.
const BROWSERS = {
    chromium: {
        executablePath: '/usr/bin/chromium',
        args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
            '--disable-component-update', '--disable-sync'],
    },
    firefox: { browser: 'firefox', executablePath: '/usr/bin/firefox-esr', args: ['--headless'] },
};

export async function startBrowser(name = 'chromium') {
    const data = folder();
    const browser = await puppeteer.launch({ userDataDir: data, protocolTimeout: 60000, ...BROWSERS[name] });
    const close = browser.close.bind(browser);
    browser.close = async () => {
        await close();
        rmSync(data, { recursive: true, force: true });
    };
    return browser;
}

export const wait = milliseconds => new Promise(resolve => setTimeout(resolve, milliseconds));

// Until `probe` gives something; what it throws counts as nothing.
export async function until(probe, what, seconds = Number(process.env.PATIENCE ?? 20)) {
    let last;
    for (const end = Date.now() + seconds * 1000; Date.now() < end; await wait(25)) {
        try {
            const value = await probe();
            if (value) return value;
            last = value;
        } catch (error) {
            last = error;
        }
    }
    throw new Error(`${what} didn't come: ${last}`);
}

// The console as its page asks it, without the page.
export class Client {
    static async enter(url) {
        const answer = await fetch(url, { redirect: 'manual' });
        const client = new Client();
        client.origin = new URL(url).origin;
        client.cookie = answer.headers.get('set-cookie').split(';')[0];
        return client;
    }

    async read(what, parameters = {}) {
        return (await fetch(`${this.origin}/api/${what}?${new URLSearchParams(parameters)}`, { headers: { Cookie: this.cookie } })).json();
    }

    async send(what, body) {
        return (await fetch(`${this.origin}/api/${what}`, {
            method: 'POST', body: JSON.stringify(body),
            headers: { Cookie: this.cookie, Origin: this.origin, 'Content-Type': 'application/json' },
        })).json();
    }
}
