// The processor under Node, in a scope like that of an audio worklet.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';

const page = new URL('../../build/page/', import.meta.url);
const attributes = JSON.parse(readFileSync(new URL('attributes.json', page), 'utf8'));

let Processor;
Object.assign(globalThis, {
  sampleRate: 48000,
  currentTime: 0,
  AudioWorkletProcessor: class {
    port = { postMessage: (answer) => (this.answer = answer) };
  },
  registerProcessor: (name, made) => (Processor = made),
});
await import('../../page/worklet.js');

function makeProcessor(given = {}) {
  const module = new WebAssembly.Module(readFileSync(new URL('vesk.wasm', page)));
  return new Processor({
    processorOptions: { module, values: attributes.map((a) => given[a.name] ?? a.default) },
  });
}

const block = (frames) => [new Float32Array(frames), new Float32Array(frames)];

test('a block allocates nothing', () => {
  const processor = makeProcessor();
  const [inputs, outputs] = [[block(128)], [block(128)]];
  const play = (blocks) => {
    for (let i = 0; i < blocks; ++i) processor.process(inputs, outputs);
  };
  play(20000); // until everything is compiled
  const before = process.memoryUsage().heapUsed;
  play(5000);
  const grown = process.memoryUsage().heapUsed - before;
  // 16 bytes a block, the smallest object, would be 80,000.
  assert.ok(grown < 40000, `${grown} bytes in 5000 blocks`);
});

test('blocks of any length, and inputs that come and go', () => {
  const processor = makeProcessor();
  for (const frames of [128, 1, 100, 5000, 128]) {
    const out = block(frames);
    for (const inputs of [[], block(frames).map((c) => c.fill(0.5))])
      assert.equal(processor.process([inputs], [out]), true);
  }
  const out = block(48000);
  processor.process([[]], [out]);
  assert.ok(Math.max(...out[0]) > 0.2, 'the echo of what came in');
  processor.receive({ ask: true });
  assert.ok(Math.abs(processor.answer.readDelay[0] - 0.375) < 0.001);
});

test('starts on the delay times and on the values it is made with', () => {
  const processor = makeProcessor({ repitch: [1], delay: [0.1, 0.2], mix: [0] });
  const [input, out] = [block(128).map((c) => c.fill(0.5)), block(128)];
  processor.process([input], [out]);
  assert.deepEqual(out, input, 'the dry signal, without a ramp from the default');
  processor.process([[]], [block(12000)]); // a quarter of a second, while a tape head would glide
  const [left, right] = processor.state().readDelay;
  assert.ok(Math.abs(left - 0.1) < 0.001 && Math.abs(right - 0.2) < 0.001, `${left} ${right}`);
});
