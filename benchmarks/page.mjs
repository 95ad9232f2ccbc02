// What the module costs, in ns a frame of 20,833 that last at 48 kHz: under Node and in Chromium, in
// blocks of 128 frames; and what is sent over the wire.
//   node benchmarks/page.mjs         after scripts/page and scripts/test-page, which install
import { readdirSync, readFileSync } from 'node:fs';
import { gzipSync } from 'node:zlib';
import { Effect } from '../page/effect.js';
import { openBrowser, root } from '../tests/page/browser.js';

const attributes = JSON.parse(readFileSync(`${root}build/page/attributes.json`, 'utf8'));
const module = new WebAssembly.Module(readFileSync(`${root}build/page/vesk.wasm`));
const rate = 48000;
const seconds = 20;
const runs = 5;

const values = (given) => attributes.map(({ name, default: v }) => given[name] ?? v);
const settings = {
  'delay alone': values({}),
  'everything on': values({
    mix: [0.5],
    gate: [1],
    gate_threshold: [-50],
    duck: [1],
    duck_threshold: [-30],
    clip: [1],
    mod_delay: [0.3],
    mod_envelope: [0.5],
    reverb: [0.4],
    noise: [0.3],
    noise_morph: [0.4],
    wobble: [0.3],
    wobble_morph: [0.4],
    width: [1.5],
    drywetmode: [1],
  }),
};

function inNode(v) {
  const effect = new Effect(module, rate);
  effect.startWith(v);
  const block = () => Float32Array.from({ length: 128 }, () => Math.random() - 0.5);
  const [l, r, outL, outR] = [block(), block(), block(), block()];
  const blocks = (seconds * rate) / 128;
  const begin = performance.now();
  for (let i = 0; i < blocks; ++i) effect.process(l, r, outL, outR);
  return ((performance.now() - begin) * 1e6) / (blocks * 128);
}

/** The whole of an offline context: effect, source and the browser's own work. */
const inChromium = (page, v) =>
  page.evaluate(
    async (values, rate, seconds) => {
      const { makeEffectNode } = await import('./player.js');
      const context = new OfflineAudioContext(2, rate * seconds, rate);
      const source = new OscillatorNode(context, { type: 'sawtooth' });
      const node = await makeEffectNode(context, window.vesk.module, values);
      source.connect(node).connect(context.destination);
      source.start();
      const begin = performance.now();
      await context.startRendering();
      return ((performance.now() - begin) * 1e6) / (rate * seconds);
    },
    v,
    rate,
    seconds,
  );

let bytes = 0;
let packed = 0;
for (const name of readdirSync(`${root}build/page`)) {
  const file = readFileSync(`${root}build/page/${name}`);
  bytes += file.length;
  packed += gzipSync(file, { level: 9 }).length;
}
const kib = (n) => Math.round(n / 1024);
const wasm = readFileSync(`${root}build/page/vesk.wasm`);
console.log(
  `page: ${kib(bytes)} KiB, ${kib(packed)} gzipped; of that the module ` +
    `${kib(wasm.length)} KiB, ${kib(gzipSync(wasm, { level: 9 }).length)} gzipped`,
);
const begin = performance.now();
new Effect(module, rate);
console.log(`an instance is made in ${(performance.now() - begin).toFixed(0)} ms`);

const browser = await openBrowser();
try {
  const page = await browser.page();
  for (const [name, v] of Object.entries(settings)) {
    const node = Math.min(...Array.from({ length: runs }, () => inNode(v)));
    let chromium = Infinity;
    for (let i = 0; i < runs; ++i) chromium = Math.min(chromium, await inChromium(page, v));
    console.log(
      `${name}: ${node.toFixed(0)} ns a frame in Node, ${chromium.toFixed(0)} in Chromium`,
    );
  }
} finally {
  await browser.close(); // its process would keep this one alive
}
