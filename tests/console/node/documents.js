// The behaviors of the delivered plug-ins as a person sees them: by their labels, with values that aren't the
// defaults, and by the names that the documents have for the same.

const urn = name => `urn:varlo-com:AlgorithmId:${name}:1`;
const common = { Alarm: ['enable', 1], Severity: ['alarmSeverity', 2], 'Dwell time': ['dwellTime', 42] };
const delay = { 'Alarm delay': ['alarmDelay', 77] };
const engine = { 'Advanced mode': ['advanceMode', 1], Sensitivity: ['sensitivity', 8] };
const sizes = { 'Smallest object': 'minObj', 'Largest object': 'maxObj' };

export const BEHAVIORS = [
    { name: 'Abandoned Object', id: urn('AbandonedObject'), least: 3, head: engine, zone: { ...common, ...delay }, pairs: sizes, excludes: true },
    { name: 'Adaptive Motion', id: urn('AdaptiveMotion'), least: 2, head: {}, zone: { ...common, Direction: ['direction', 6] }, pairs: {} },
    { name: 'Camera Sabotage', id: urn('CameraSabotage'), head: { 'Alarm delay': ['alarmDelay', 9], Severity: ['alarmSeverity', 3] }, pairs: {} },
    { name: 'Directional Motion', id: urn('DirectionalMotion'), least: 2, head: { ...engine, 'Object speed': ['objectSpeed', 9] },
        zone: { ...common, 'Zone sensitivity': ['zoneSensitivity', 3], Direction: ['direction', 7] }, pairs: {} },
    { name: 'Loitering Detection', id: urn('LoiteringDetection'), least: 3, head: {}, zone: { ...common, ...delay }, pairs: {} },
    { name: 'Object Counting', id: urn('ObjectCounting'), least: 2, head: {},
        zone: { ...common, Direction: ['direction', 8], 'Alarm count': ['alarmCount', 12], 'Reset count after alarm': ['countReset', 1] },
        pairs: { 'Average object': 'avgObj' } },
    { name: 'Object Removal', id: urn('ObjectRemoval'), least: 3, head: engine, zone: { ...common, ...delay }, pairs: {} },
    { name: 'Stopped Vehicle', id: urn('StoppedVehicle'), least: 3, head: engine, zone: { ...common, ...delay }, pairs: sizes, excludes: true },
];

export const SCENE = {
    name: 'Scene', excludes: true,
    head: { 'Scene type': ['sceneType', 2], Background: ['background', 1], Tuning: ['tuning', 1], Sensitivity: ['sensitivity', 7],
        Calibrated: ['calibrated', 1], 'Physical height': ['physicalHeight', 183], Unit: ['unit', 'mm'] },
    pairs: { ...sizes, 'Object near left': 'object1', 'Object near right': 'object3', 'Object at distance': 'object2', 'Near width': 'nearWidth', 'Far width': 'farWidth' },
};

// A document of the service as plain values, taken apart in the browser: it has an XML parser.
export const taken = (page, xml) => page.evaluate(text => {
    const root = new DOMParser().parseFromString(text, 'text/xml').documentElement;
    const points = parent => [...parent.querySelectorAll(':scope > vertices > vertex')].map(one => ['x', 'y'].map(axis => Number(one.querySelector(axis).textContent)));
    const values = {};
    for (const { name, value } of [...root.attributes, ...[...root.querySelectorAll('calibration, physicalHeight')].flatMap(one => [...one.attributes])]) values[name] = value;
    for (const one of root.querySelectorAll(':scope > *, physicalHeight')) if (!one.children.length) values[one.localName] = one.textContent;
    return {
        values,
        zones: [...root.querySelectorAll('roi')].map(zone => ({
            ...Object.fromEntries([...zone.children].filter(one => !one.children.length).map(one => [one.localName, one.textContent])), points: points(zone),
        })),
        excludes: [...root.querySelectorAll('excludeZone')].map(points),
        pairs: Object.fromEntries([...root.querySelectorAll('objectsize, fov')].map(one => [one.querySelector('name').textContent, points(one)])),
    };
}, xml);
