// Settings that leave the page come back the same: by its own links, and by the program's reader of
// presets.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { test } from 'node:test';
import { BadText, positionOf, readNumber, textOf, valueAt } from '../../page/attributes.js';
import {
  commandText,
  linkText,
  messagesText,
  presetText,
  readLink,
} from '../../page/patch_text.js';
import { Settings } from '../../page/settings.js';

const build = new URL('../../build/', import.meta.url);
const attributes = JSON.parse(readFileSync(new URL('page/attributes.json', build), 'utf8'));
const named = (name) => attributes.find((a) => a.name === name);

// Every attribute anywhere on its way, some at an end or at the default.
function anySettings(seed) {
  const settings = new Settings(attributes);
  let state = seed;
  const next = () => (state = (Math.imul(state, 1103515245) + 12345) >>> 0) / 2 ** 32;
  settings.setAll(
    attributes.map((a) =>
      a.default.map((standard) => {
        if (a.kind === 'toggle' || a.kind === 'choice') return Math.floor(next() * (a.high + 1));
        return next() < 0.2 ? standard : valueAt(a, next() * 1.2 - 0.1);
      }),
    ),
  );
  return settings;
}

test('a link and a preset file say the same as the settings', () => {
  const folder = mkdtempSync(join(tmpdir(), 'vesk-'));
  const all = Array.from({ length: 50 }, (_, seed) => anySettings(seed + 1));
  const files = all.map((settings, i) => {
    const { values, faults } = readLink(attributes, linkText(settings));
    assert.deepEqual(values, settings.values, linkText(settings));
    assert.deepEqual(faults, []);
    const file = join(folder, `any-${String(i).padStart(2, '0')}.txt`);
    writeFileSync(file, presetText(settings, 'Any: settings'));
    return file;
  });
  execFileSync(new URL('release/bin/write_page_texts', build).pathname, [folder, ...files]);
  const read = JSON.parse(readFileSync(join(folder, 'presets.json'), 'utf8'));
  rmSync(folder, { recursive: true });
  all.forEach((settings, i) =>
    assert.deepEqual(
      attributes.map((a) => read[i].values[a.name]),
      settings.values,
    ),
  );
});

test('messages and the command write what is not at its default', () => {
  const settings = new Settings(attributes);
  assert.equal(messagesText(settings), '');
  settings.setAll(
    readLink(attributes, 'delay=0.25,0.5&mod_waveform=saw+UP&gate=yes&output=-6').values,
  );
  assert.equal(messagesText(settings), 'gate 1, delay 0.25 0.5, output -6, mod_waveform 2');
  assert.equal(
    commandText(settings),
    "vesk render in.wav out.wav --set gate=on --set delay=0.25,0.5 --set output=-6 --set 'mod_waveform=Saw up'",
  );
});

test('what is typed in is understood with its unit or refused', () => {
  for (const [name, text, value] of [
    ['delay', '375ms', 0.375],
    ['delay', ' 1,5 s ', 1.5],
    ['mix', '50 %', 0.5],
    ['output', '−6 dB', -6],
    ['mod_freq', '0.02khz', 20],
    ['mod_phase', '90°', 90],
  ])
    assert.equal(readNumber(named(name), text), value, text);
  for (const [name, text] of [
    ['delay', '6'],
    ['delay', '3 dB'],
    ['mix', ''],
    ['mix', '1e'],
    ['mix', 'NaN'],
    ['output', '0x1'],
    ['feedback', '-0.01'],
  ])
    assert.throws(() => readNumber(named(name), text), BadText, `${name} ${text}`);
});

test('a knob shows what it sets, and typing that in again changes nothing', () => {
  for (const a of attributes.filter(({ kind }) => kind === 'number' || kind === 'list'))
    for (let i = 0; i <= 1000; ++i) {
      const value = valueAt(a, i / 1000);
      assert.ok(value >= a.low && value <= a.high);
      assert.ok(Math.abs(positionOf(a, value) - i / 1000) < 0.002, `${a.name} ${i}`);
      assert.equal(readNumber(a, textOf(a, value)), value, `${a.name} ${textOf(a, value)}`);
    }
});
