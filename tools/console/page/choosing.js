// Which camera, profile and behavior; what the camera has, looked at again and again.

import * as api from './api.js';
import * as model from './model.js';
import { behaviorFields, zoneFields } from './drawing.js';
import { fieldsOf } from './fields.js';
import { List } from './list.js';
import { render } from './render.js';
import { $, alarm, attempt, behaviorNow, change, context, draft, draftKey, failed, profileNow, say, state } from './state.js';

export const POLL = 4000; // milliseconds between looks at the camera

export const profileList = new List($('profiles'), id => attempt(() => chooseProfile(id)));
export const behaviorList = new List($('behaviors'), id => attempt(() => chooseBehavior(id)));
export const shapeList = new List($('shapes'), key => {
    state.selected = key;
    state.vertex = null;
    render();
});

export async function chooseCamera(index) {
    Object.assign(state, { camera: index, profiles: [], profile: null, behaviors: [], behavior: null, kind: null, drawing: null });
    const { title, frame } = state.cameras[index];
    state.frame = frame;
    document.title = `${title} - Varlo analytics`;
    $('heading').textContent = title;
    $('alert').replaceChildren();
    state.alerts = { picture: state.alerts.picture };
    render();
    await refresh();
    const first = state.profiles.find(({ running }) => running) ?? state.profiles[0];
    // A person may have been faster than the camera.
    if (first && state.profile === null) await chooseProfile(first.id);
}

export async function chooseProfile(id) {
    if (id === state.profile && state.behaviors.length) return;
    Object.assign(state, { profile: id, behaviors: [], kind: null, drawing: null, selected: null, vertex: null });
    render();
    await refreshBehaviors();
    const same = behaviorNow() ?? state.behaviors.find(one => one.state === 'active') ?? state.behaviors[0];
    if (same) await chooseBehavior(same.id);
}

export async function chooseBehavior(id) {
    if (id === state.behavior && state.kind) return;
    Object.assign(state, { behavior: id, kind: null, drawing: null, selected: null, vertex: null, findings: [] });
    render();
    await load();
}

let loads = 0;

// Opens the document; a draft of it stays as it is. Of two that are asked for, the later one counts: the earlier
// may be older than what has been saved by the time that it comes.
async function load() {
    const asked = context();
    const turn = ++loads;
    const { document: doc, ...kind } = await api.read('document', asked);
    if (turn !== loads || !model.equal(asked, context())) return;
    state.drafts[draftKey(asked)] ??= model.open(doc);
    state.kind = kind;
    behaviorFields.build(fieldsOf(kind.model));
    zoneFields.build(fieldsOf(kind.model, 'rois/'), 'rois/', () => `${state.selected}/`);
    state.selected = model.shapes(draft().doc)[0]?.key ?? null;
    // Without own changes the page shows what the camera has now.
    if (!model.isChanged(draft())) state.drafts[draftKey(asked)] = model.settle(draft(), doc);
    change(draft());
}

// Of questions that are asked again and again: called at each question, gives what tells at its answer whether that is to
// be shown. One that comes behind the answer to a later question tells of the past.
function inOrder() {
    let asked = 0;
    let shown = 0;
    return () => {
        const turn = ++asked;
        return () => {
            if (turn < shown) return false;
            shown = turn;
            return true;
        };
    };
}
const cameraTurn = inOrder();
const behaviorsTurn = inOrder();

export async function refresh() {
    const camera = state.camera;
    const inTime = cameraTurn();
    const { profiles, switches } = await api.read('camera', { camera });
    if (camera !== state.camera || !inTime()) return;
    const known = state.profiles;
    state.profiles = profiles;
    for (const [id, value] of [['analytics', switches.analytics], ['motion', switches.motion]]) {
        $(id).indeterminate = value === null;
        // Not known: what a camera begins with, so that the first press changes it.
        $(id).checked = value ?? id === 'analytics';
        $(id).title = value === null ? 'The camera doesn’t tell; the console knows it once it has switched.' : '';
    }
    if (state.profile !== null && !profileNow()) {
        say(`The profile ${known.find(({ id }) => id === state.profile)?.name ?? ''} isn’t there any more.`);
        Object.assign(state, { profile: null, behaviors: [], behavior: null, kind: null, drawing: null });
    }
    alarm('camera', '');
    render();
}

export async function refreshBehaviors() {
    const asked = { camera: state.camera, profile: state.profile };
    if (asked.profile === null) return;
    const inTime = behaviorsTurn();
    const { behaviors } = await api.read('behaviors', asked);
    if (asked.camera !== state.camera || asked.profile !== state.profile || !inTime()) return;
    state.behaviors = behaviors;
    render();
}

// What can be selected costs the camera more than the rest.
export async function poll(count = 1) {
    try {
        if (!document.hidden) await refresh();
        if (!document.hidden && count % 5 === 0) await refreshBehaviors();
    } catch (error) {
        failed(error);
    }
    setTimeout(poll, POLL, count + 1);
}
