// What is chosen and drawn, what is said of it, and the steps of editing.

import * as api from './api.js';
import * as model from './model.js';
import { element } from './fields.js';
import { render } from './render.js';

const PAUSE = 250; // milliseconds after a change before it is checked

export const $ = id => document.getElementById(id);

export const state = {
    cameras: [], camera: 0, frame: [320, 240], profiles: [], profile: null, behaviors: [], behavior: null,
    kind: null, // of the open document: { model, zone, points }
    picture: null, // its width and height
    drafts: {}, selected: null, vertex: null, drawing: null, findings: [], alerts: {},
};

export const context = () => ({ camera: state.camera, profile: state.profile, behavior: state.behavior });
export const draftKey = ({ camera, profile, behavior }) => `${state.cameras[camera]?.url} ${profile} ${behavior}`;
export const draft = () => (state.kind ? state.drafts[draftKey(context())] : undefined);
export const shape = () => model.shapeOf(draft()?.doc, state.selected);
export const profileNow = () => state.profiles.find(({ id }) => id === state.profile);
export const behaviorNow = () => state.behaviors.find(({ id }) => id === state.behavior);

export const say = text => { $('status').textContent = text; };

export function alarm(source, text) {
    if ((state.alerts[source] ?? '') === text) return;
    state.alerts[source] = text;
    $('alert').replaceChildren(...Object.values(state.alerts).filter(Boolean).map(one => element('p', { dir: 'auto' }, one)));
}

// A camera that doesn't answer is said until it does again.
export function failed(error, source = 'action') {
    if (!(error instanceof api.Refused)) throw error;
    alarm(error.answer.lost || error.status === 0 ? 'camera' : source, error.message);
}

// Does what a person has asked for; what goes wrong is said. What was said of the step before is past.
export async function attempt(action) {
    say('');
    alarm('action', '');
    try {
        return await action();
    } catch (error) {
        failed(error);
        return undefined;
    }
}

let checking = 0;

export function change(history) {
    state.drafts[draftKey(context())] = history;
    if (state.selected && !shape()) {
        const left = model.shapes(history.doc);
        const list = state.selected.split('/')[0];
        state.selected = (left.findLast(({ key }) => key.startsWith(list)) ?? left[0])?.key ?? null;
        state.vertex = null;
    }
    render();
    keep();
    clearTimeout(checking);
    checking = setTimeout(check, PAUSE);
}

// A page that is loaded again has the drafts again.
export function keep() {
    const changed = Object.entries(state.drafts).filter(([, history]) => model.isChanged(history));
    try {
        sessionStorage.setItem('drafts', JSON.stringify(Object.fromEntries(changed)));
    } catch {
        // Without room for them they live as long as the page.
    }
}

export function edit(doc, tag) {
    say('');
    change(model.edit(draft(), doc, tag));
}

export function seal() {
    const history = draft();
    if (history && history.tag !== null) change(model.seal(history));
}

export async function check() {
    const history = draft();
    if (!history) return;
    try {
        const { findings } = await api.send('check', { ...context(), document: history.doc });
        if (draft()?.doc === history.doc) state.findings = findings;
        render();
    } catch (error) {
        failed(error);
    }
}
