// The page in headless Chromium: it loads without an error or a foreign request, plays the native
// bits, keeps time, and everything in it can be reached.
import assert from 'node:assert/strict';
import { existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after, before, describe, test } from 'node:test';
import { Effect } from '../../page/effect.js';
import { statedRate, wavHeader } from '../../page/wav.js';
import { openBrowser, root } from './browser.js';
import { hashOf, makeInput, readScenarios } from './scenario.js';

const attributes = JSON.parse(readFileSync(`${root}build/page/attributes.json`, 'utf8'));
const presets = JSON.parse(readFileSync(`${root}build/page/presets.json`, 'utf8'));
const module = new WebAssembly.Module(readFileSync(`${root}build/page/vesk.wasm`));
const indexOf = (name) => attributes.findIndex((a) => a.name === name);

/** @type {Awaited<ReturnType<typeof openBrowser>>} */
let browser;
before(async () => (browser = await openBrowser()));
after(() => browser?.close());

const sleep = (ms) => new Promise((resolve) => setTimeout(resolve, ms));
const noticeOf = (page) => page.$eval('#notice', (e) => e.textContent);
const valuesOf = (page) => page.evaluate(() => window.vesk.settings.values);

/** What the processor answers now. */
async function stateOf(page) {
  await page.evaluate(() => {
    const { player } = window.vesk.transport;
    player.state = null;
    player.ask();
  });
  await page.waitForFunction(() => window.vesk.transport.player.state);
  return page.evaluate(() => window.vesk.transport.player.state);
}

describe('the page', () => {
  test('loads without an error, a warning or a request to elsewhere, and plays', async () => {
    const page = await browser.page('#mix=0.5');
    const begin = Date.now();
    await page.click('#start');
    await page.waitForFunction(
      () => document.querySelector('#output-meter [role=meter]').ariaValueNow > -40,
    );
    console.log(`first sound ${Date.now() - begin} ms after Start`);
    for (const source of ['drums', 'voice', 'nothing']) await page.select('#source', source);
    for (const id of ['bypass', 'clear', 'reset']) await page.click(`#${id}`);
    await page.click('#start');
    assert.equal(await page.$eval('#start', (e) => e.textContent), 'Start');
    assert.equal(await noticeOf(page), '');
    assert.deepEqual(page.faults, []);
    assert.deepEqual(
      page.requests.filter((url) => !url.startsWith(browser.address)),
      [],
    );
    await page.close();
  });

  test('keeps time for ten seconds, with displays and turning knobs', async () => {
    const page = await browser.page();
    await page.click('#start');
    await sleep(1000);
    const before = await page.evaluate(() => {
      const { player } = window.vesk.transport;
      player.effect.port.postMessage({ watch: true });
      return player.context.currentTime;
    });
    const frames = await page.evaluate(
      () =>
        new Promise((resolve) => {
          let count = 0;
          const begin = performance.now();
          const { settings } = window.vesk;
          const step = (now) => {
            ++count;
            settings.set(0, [0.5 + 0.5 * Math.sin(now / 300)]);
            if (now - begin < 10000) requestAnimationFrame(step);
            else resolve(count);
          };
          requestAnimationFrame(step);
        }),
    );
    const played = await page.evaluate(() => window.vesk.transport.player.context.currentTime);
    const state = await stateOf(page);
    console.log(
      `${frames / 10} pictures a second, the latest block ${(1000 * state.worstLag).toFixed(0)} ms behind, ` +
        `${state.blocks} blocks, ${(played - before).toFixed(2)} s played`,
    );
    assert.ok(state.worstLag > 0 && state.worstLag < 0.2, `a block came ${state.worstLag} s late`);
    assert.ok(played - before > 9.9);
    assert.ok(frames > 300);
    assert.deepEqual(page.faults, []);
    await page.close();
  });

  test('goes on in a hidden tab, and after the browser has paused the sound', async () => {
    const page = await browser.page('#mix=0.5');
    await page.click('#start');
    await page.waitForFunction(() => window.vesk.transport.player?.state);
    const blocks = async () => (await stateOf(page)).blocks;
    const other = await browser.browser.newPage();
    await other.bringToFront();
    const hidden = await blocks();
    await sleep(500);
    assert.ok((await blocks()) - hidden > 100);
    await other.close();
    await page.evaluate(() => window.vesk.transport.player.context.suspend());
    await page.waitForSelector('#notice button');
    assert.match(await noticeOf(page), /paused the sound; Start goes on/);
    const paused = await blocks();
    await page.click('#start');
    await sleep(500);
    assert.ok((await blocks()) > paused);
    assert.equal(await noticeOf(page), '');
    assert.deepEqual(page.faults, []);
    await page.close();
  });

  test('has no serious accessibility faults, wide, narrow, light and dark', async () => {
    const axe = readFileSync(new URL('node_modules/axe-core/axe.min.js', import.meta.url), 'utf8');
    for (const width of [1280, 360])
      for (const value of ['light', 'dark']) {
        const page = await browser.page('#', {
          before: async (p) => {
            await p.setBypassCSP(true); // for axe alone
            await p.setViewport({ width, height: 800 });
            await p.emulateMediaFeatures([{ name: 'prefers-color-scheme', value }]);
          },
        });
        await page.evaluate(axe);
        const found = await page.evaluate(async () => {
          const { violations } = await window.axe.run();
          return violations.map((v) => `${v.impact} ${v.id}: ${v.nodes[0].html}`);
        });
        assert.deepEqual(found, [], `${width} pixels, ${value}`);
        assert.equal(await page.evaluate(() => document.documentElement.scrollWidth), width);
        await page.close();
      }
  });

  test('every control is reached by Tab and its keys reach the processor', async () => {
    const page = await browser.page('#repitch=on');
    await page.click('#start');
    await page.waitForFunction(() => window.vesk.transport.player);
    await page.evaluate(() => {
      window.sent = [];
      const { port } = window.vesk.transport.player.effect;
      const post = port.postMessage.bind(port);
      port.postMessage = (message) => {
        if (message.set) window.sent.push(message.set);
        post(message);
      };
    });
    const reached = new Set();
    await page.focus('#volume');
    for (let i = 0; i < 80 && reached.size < attributes.length; ++i) {
      await page.keyboard.press('Tab');
      const found = await page.evaluate(() => {
        const { activeElement } = document;
        const control = activeElement.closest('[data-attribute]');
        return (
          control && {
            name: control.dataset.attribute,
            role: activeElement.role,
            high: activeElement.ariaValueNow === activeElement.ariaValueMax,
          }
        );
      });
      if (!found) continue;
      reached.add(found.name);
      const { kind } = attributes[indexOf(found.name)];
      if (kind === 'toggle') await page.keyboard.press('Space');
      else if (kind === 'choice')
        await page.keyboard.press(found.name === 'reverb_location' ? 'ArrowUp' : 'ArrowDown');
      else if (found.role === 'slider')
        await page.keyboard.press(found.high ? 'PageDown' : 'PageUp');
    }
    assert.deepEqual(
      attributes.map((a) => a.name).filter((name) => !reached.has(name)),
      [],
    );
    await page.waitForFunction(() => {
      const { player } = window.vesk.transport;
      player.ask();
      return player.state.settings === window.sent.length; // messages that the processor has applied
    });
    const sent = await page.evaluate(() => window.sent);
    assert.deepEqual(
      [...new Set(sent.map(([index]) => index))].sort((a, b) => a - b),
      attributes.map((_, i) => i),
    );
    assert.deepEqual(page.faults, []);
    await page.close();
  });

  test('a knob takes exact values, drags, wheel, double click, and refuses nonsense', async () => {
    const page = await browser.page();
    const feedback = indexOf('feedback');
    const dial = await page.$('[data-attribute=feedback] [role=slider]');
    const field = '[data-attribute=feedback] .value';
    const value = async () => (await valuesOf(page))[feedback][0];
    await dial.focus();
    await page.keyboard.type('62.5 %');
    await page.keyboard.press('Enter');
    assert.equal(await value(), 0.625);
    await page.keyboard.type('9');
    await page.keyboard.press('Enter');
    assert.equal(await value(), 0.625);
    assert.match(await noticeOf(page), /feedback: 9 is not within 0 to 1.5/);
    assert.equal(await page.$eval(field, (e) => e.value), '0.625');
    await dial.scrollIntoView();
    const box = await dial.boundingBox();
    const [x, y] = [box.x + box.width / 2, box.y + box.height / 2];
    await page.mouse.move(x, y);
    await page.mouse.down();
    await page.mouse.move(x, y - 20);
    await page.mouse.up();
    assert.equal(await value(), 0.775);
    await page.mouse.wheel({ deltaY: 100 });
    await sleep(100);
    assert.equal(await value(), 0.76);
    await page.mouse.click(x, y, { count: 2 });
    assert.equal(await value(), 0.5);
    assert.deepEqual(page.faults, []);
    await page.close();
  });

  test('plays the microphone, after a warning, where it is permitted', async () => {
    const context = browser.browser.defaultBrowserContext();
    await context.overridePermissions(browser.address, ['microphone']);
    const page = await browser.page('#mix=0');
    await page.click('#start');
    await page.select('#source', 'microphone');
    await page.click('#microphone-warning .main');
    await page.waitForFunction(
      () => window.vesk.transport.player.source instanceof MediaStreamAudioSourceNode,
    );
    await page.waitForFunction(
      () => document.querySelector('#output-meter [role=meter]').ariaValueNow > -40,
    );
    assert.equal(await noticeOf(page), '');
    assert.deepEqual(page.faults, []);
    await context.clearPermissionOverrides();
    await page.close();
  });

  test('a link is a patch, and nonsense in it is said and left out', async () => {
    const first = await browser.page('#');
    await first.evaluate((preset) => {
      const { settings } = window.vesk;
      settings.setAll(settings.attributes.map((a) => preset[a.name]));
    }, presets[0].values);
    await sleep(500);
    const hash = new URL(first.url()).hash;
    const second = await browser.page(hash);
    assert.deepEqual(
      await valuesOf(second),
      attributes.map((a) => presets[0].values[a.name]),
    );
    assert.equal(await noticeOf(second), '');
    const third = await browser.page(
      '#feedback=7&mix=0.25&nonsense=1&delay=a,b&gate=perhaps&mod_waveform=Saw+up',
    );
    const values = await valuesOf(third);
    const changed = attributes.filter((a, i) => a.default.some((v, e) => v !== values[i][e]));
    assert.deepEqual(
      changed.map((a) => a.name),
      ['mix', 'mod_waveform'],
    );
    for (const part of ['feedback: 7', 'nonsense', 'delay: “a”', 'gate: expected on or off'])
      assert.ok((await noticeOf(third)).includes(part), part);
    for (const page of [first, second, third]) {
      assert.deepEqual(page.faults, []);
      await page.close();
    }
  });

  test('goes on without SIMD, AudioWorklet or microphone, and after a file that is none', async () => {
    const without = (script) => ({
      before: (p) => p.evaluateOnNewDocument(script),
      ready: '#notice button',
    });
    for (const [script, text] of [
      ['WebAssembly.validate = () => false', /lacks WebAssembly with SIMD/],
      ['delete globalThis.AudioWorkletNode', /lacks AudioWorklet/],
    ]) {
      const page = await browser.page('', without(script));
      assert.match(await noticeOf(page), text);
      assert.equal((await page.$$('[role=slider]')).length, 21);
      assert.deepEqual(page.faults, []);
      await page.close();
    }
    const page = await browser.page();
    // The chord comes so late that the microphone overtakes it.
    await page.evaluate(() => {
      const { choice } = window.vesk.transport;
      const make = choice.buffer.bind(choice);
      choice.buffer = async (rate) => {
        const buffer = await make(rate);
        await new Promise((resolve) => setTimeout(resolve, 300));
        return buffer;
      };
    });
    await page.click('#start');
    await page.waitForFunction(() => window.vesk.transport.player?.context.state === 'running');
    await page.select('#source', 'microphone');
    await sleep(400);
    await page.click('#microphone-warning .main');
    await page.waitForSelector('#notice button');
    assert.match(await noticeOf(page), /does not let this page use the microphone/);
    assert.equal(await page.$eval('#source', (e) => e.value), 'chord');
    const input = await page.$('#file');
    await input.uploadFile(`${root}README.md`);
    await page.waitForFunction(() =>
      document.querySelector('#notice').textContent.includes('README.md'),
    );
    assert.match(await noticeOf(page), /finds no sound in it/);
    assert.equal(await page.$eval('#start', (e) => e.textContent), 'Stop');
    assert.deepEqual(page.faults, []);
    await page.close();
  });
});

describe('the sound of Chromium', () => {
  // What is set before the first block can be played there at any time; changes come at block
  // boundaries, at which the context is held meanwhile.
  const play = (page, options) =>
    page.evaluate(async ({ rate, values, seed, input, changes }) => {
      const { makeEffectNode } = await import('./player.js');
      const { module } = window.vesk;
      const context = new OfflineAudioContext(2, input[0].length, rate);
      const buffer = context.createBuffer(2, input[0].length, rate);
      input.forEach((samples, c) => buffer.copyToChannel(new Float32Array(samples), c));
      const source = new AudioBufferSourceNode(context, { buffer });
      const node = await makeEffectNode(context, module, values, seed);
      source.connect(node).connect(context.destination);
      source.start();
      const answered = () =>
        new Promise((resolve) => {
          node.port.onmessage = resolve;
          node.port.postMessage({ ask: true });
        });
      for (const [time, messages] of changes)
        context.suspend(time).then(async () => {
          for (const message of messages) node.port.postMessage(message);
          await answered();
          context.resume();
        });
      const played = await context.startRendering();
      return [0, 1].map((c) => Array.from(played.getChannelData(c)));
    }, options);

  const defaults = attributes.map((a) => a.default);
  const equalToNode = async (page, rate, values, changes) => {
    const seed = [1, 2];
    const frames = 128 * 400;
    const input = makeInput({ input: ['burst', '7', '0.5', '3000', '9000'], frames });
    const expected = input.map((c) => new Float32Array(c.length));
    const effect = new Effect(module, rate);
    effect.startWith(values);
    effect.seed(...seed);
    const due = changes.map(([block, messages]) => [block, messages]);
    for (let block = 0; block < frames / 128; ++block) {
      while (due[0]?.[0] === block)
        for (const { set, call } of due.shift()[1]) set ? effect.set(...set) : effect[call]();
      effect.process(
        ...[...input, ...expected].map((c) => c.subarray(128 * block, 128 * block + 128)),
      );
    }
    const out = await play(page, {
      rate,
      values,
      seed,
      input: input.map((c) => Array.from(c)),
      changes: changes.map(([block, messages]) => [(128 * block) / rate, messages]),
    });
    for (const c of [0, 1]) {
      const different = out[c].findIndex((y, n) => !Object.is(y + 0, expected[c][n] + 0));
      assert.equal(different, -1, `first frame that differs at ${rate} Hz, channel ${c}`);
    }
    assert.ok(Math.max(...out[0].slice(-9000).map(Math.abs)) > 0.001, 'the echoes are heard');
  };

  test('presets and a score give the bits of the module under Node, at three rates', async () => {
    const page = await browser.page();
    const set = (name, ...values) => ({ set: [indexOf(name), values] });
    const score = [
      [40, [set('mix', 0.5), set('delay', 0.02, 0.03), set('channel_mode', 1)]],
      [90, [set('feedback', 0.9), set('reverb', 0.5), set('noise', 0.3)]],
      [91, [set('noise_morph', 0.7), set('wobble', 0.4), set('repitch', 1)]],
      [200, [{ call: 'clear' }, set('mod_delay', 0.5), set('mod_waveform', 5)]],
      [300, [{ call: 'reset' }, set('output', -6), set('gate', 1)]],
    ];
    for (const rate of [44100, 48000, 96000]) {
      for (const { values } of presets)
        await equalToNode(
          page,
          rate,
          attributes.map((a) => values[a.name]),
          [],
        );
      await equalToNode(page, rate, defaults, score);
    }
    assert.deepEqual(page.faults, []);
    await page.close();
  });

  test('the golden render of the defaults', async () => {
    const page = await browser.page();
    const [scenario] = readScenarios(`${root}tests/golden/device-defaults.txt`);
    const golden = readFileSync(`${root}tests/golden/device-defaults.f32`);
    const out = await play(page, {
      rate: scenario.rate,
      values: defaults,
      seed: scenario.seed,
      input: makeInput(scenario).map((c) => Array.from(c)),
      changes: [],
    });
    const samples = [0, 1].map((c) =>
      Float32Array.from(out[c], (_, n) => golden.readFloatLE(8 * n + 4 * c)),
    );
    assert.equal(hashOf(out.map((c) => Float32Array.from(c))), hashOf(samples));
    await page.close();
  });

  test('a file at its own rate becomes a WAV with the same bits and a tail', async () => {
    const folder = mkdtempSync(join(tmpdir(), 'vesk-'));
    const rate = 32000;
    const [left, right] = makeInput({ input: ['noise', '3', '0.5'], frames: 20000 });
    const sound = Buffer.alloc(8 * left.length);
    for (let n = 0; n < left.length; ++n) {
      sound.writeFloatLE(left[n], 8 * n);
      sound.writeFloatLE(right[n], 8 * n + 4);
    }
    const file = join(folder, 'burst.wav');
    writeFileSync(file, Buffer.concat([Buffer.from(wavHeader(left.length, rate, 2)), sound]));

    const page = await browser.page('#delay=0.1,0.15&mix=0.5');
    const session = await page.createCDPSession();
    await session.send('Browser.setDownloadBehavior', { behavior: 'allow', downloadPath: folder });
    await (await page.$('#file')).uploadFile(file);
    await page.waitForFunction(() => document.querySelector('#source').value === 'file');
    await page.click('#render');
    await page.waitForSelector('#download:not([hidden])', { timeout: 30000 });
    await page.click('#download');
    const saved = join(folder, 'burst-vesk.wav');
    for (let i = 0; i < 100 && !existsSync(saved); ++i) await sleep(50);
    const wav = readFileSync(saved);
    rmSync(folder, { recursive: true });
    const frames = (wav.length - 58) / 8;
    assert.equal(statedRate(new Uint8Array(wav).buffer), rate);
    assert.equal(wav.readUInt32LE(wav.length - 8 * frames - 4), 8 * frames);
    assert.ok(frames > left.length + rate && frames < 10 * rate, `${frames} frames`);

    const values = attributes.map(
      ({ name, default: v }) => ({ delay: [0.1, 0.15], mix: [0.5] })[name] ?? v,
    );
    const [l, r] = [left, right].map((c) =>
      Float32Array.from({ length: frames }, (_, n) => c[n] ?? 0),
    );
    const effect = new Effect(module, rate);
    effect.startWith(values);
    effect.process(l, r, l, r);
    const different = l.findIndex(
      (y, n) => y !== wav.readFloatLE(58 + 8 * n) || r[n] !== wav.readFloatLE(62 + 8 * n),
    );
    assert.equal(different, -1, 'first frame that differs');
    assert.deepEqual(page.faults, []);
    await page.close();
  });

  test('rendering is cancelled, and a tail without an end is cut and said to be', async () => {
    const page = await browser.page('#feedback=1.5&mix=0.5');
    const text = () => page.$eval('#render-text', (e) => e.textContent);
    await page.click('#render');
    await page.waitForSelector('#cancel:not([hidden])');
    await page.click('#cancel');
    await page.waitForSelector('#cancel', { hidden: true });
    assert.match(await text(), /Cancelled; nothing was rendered/);
    assert.equal(await page.$eval('#download', (e) => e.hidden), true);
    await page.click('#render');
    await page.waitForSelector('#download:not([hidden])', { timeout: 30000 });
    assert.match(await text(), /: 64\.0 s at 48000 Hz.* It was cut after 60 s of tail/);
    console.log(await text());
    assert.deepEqual(page.faults, []);
    await page.close();
  });
});
