// The module under Node gives the bits of the golden renders, those with samples and those by hash.
import assert from 'node:assert/strict';
import { readFileSync } from 'node:fs';
import { test } from 'node:test';
import { Effect } from '../../page/effect.js';
import { act, hashOf, makeInput, readScenarios } from './scenario.js';

const golden = new URL('../golden/', import.meta.url);
const page = new URL('../../build/page/', import.meta.url);
const module = new WebAssembly.Module(readFileSync(new URL('vesk.wasm', page)));
const names = JSON.parse(readFileSync(new URL('attributes.json', page), 'utf8')).map((a) => a.name);

// Plays in vectors; what is set within a vector acts at its beginning.
function play(scenario, input) {
  const effect = new Effect(module, scenario.rate);
  if (scenario.seed) effect.seed(...scenario.seed);
  let rate = scenario.rate;
  const events = [...scenario.events];
  const out = input.map((channel) => new Float32Array(channel.length));
  for (let begin = 0; begin < scenario.frames; begin += scenario.vector) {
    while (events.length > 0 && events[0].frame <= begin) {
      const event = events.shift();
      if (event.action !== 'rate') {
        act(effect, names, event);
      } else if (Number(event.words[0]) !== rate) {
        rate = Number(event.words[0]);
        effect.prepare(rate);
        if (scenario.seed) effect.seed(...scenario.seed);
      }
    }
    const block = [...input, ...out].map((c) => c.subarray(begin, begin + scenario.vector));
    effect.process(...block);
  }
  return out;
}

for (const name of ['bad-values', 'defaults', 'ramps', 'rate-change', 'vector-one']) {
  test(`golden render device-${name}`, () => {
    const [scenario] = readScenarios(new URL(`device-${name}.txt`, golden));
    const [left, right] = play(scenario, makeInput(scenario));
    const samples = readFileSync(new URL(`device-${name}.f32`, golden));
    const expected = new Float32Array(
      samples.buffer.slice(samples.byteOffset).slice(0, samples.length),
    );
    assert.equal(expected.length, 2 * left.length);
    let different = 0;
    for (let n = 0; n < left.length; ++n)
      different += !(expected[2 * n] === left[n] && expected[2 * n + 1] === right[n]);
    assert.equal(different, 0, 'frames that differ');
  });
}

test('golden renders by hash', () => {
  const scenarios = readScenarios(new URL('generated.txt', golden));
  assert.ok(scenarios.length > 100);
  const different = scenarios.filter((s) => hashOf(play(s, makeInput(s))) !== s.hash);
  assert.deepEqual(
    different.map((s) => s.hash),
    [],
  );
});
