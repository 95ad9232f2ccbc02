// The page: what its buttons do, and which part hears of which.
import { makeControls } from './controls.js';
import { DelayDisplay, EnvelopeDisplay, SpectrumDisplay } from './displays.js';
import { byId, element } from './elements.js';
import { renderToFile } from './file_render.js';
import { History } from './history.js';
import { decibels, Levels } from './levels.js';
import { Meter } from './meter.js';
import { clearNotice, notify, reason } from './notice.js';
import { commandText, linkText, messagesText, presetText, readLink } from './patch_text.js';
import { loadModule, missingFeature, Player } from './player.js';
import { Settings } from './settings.js';
import { openMicrophone, SoundChoice } from './sound_choice.js';

/** @typedef {{name: string, title: string, description: string, values: Record<string, number[]>}} Preset */

/** @param {string} file */
async function loadJson(file) {
  const response = await fetch(file);
  if (!response.ok) throw new Error(`${file} was not loaded: status ${response.status}`);
  return response.json();
}

/** The address follows the settings, and they follow an address that is pasted in. @param {Settings} settings */
function keepInAddress(settings) {
  const read = () => {
    const text = location.hash.slice(1);
    if (text === linkText(settings)) return;
    const { values, faults } = readLink(settings.attributes, text);
    settings.setAll(values);
    if (faults.length > 0) notify(`Left out of the link: ${faults.join('; ')}.`);
  };
  let waiting = false;
  const write = () => {
    waiting = false;
    history.replaceState(null, '', `#${linkText(settings)}`);
  };
  read();
  addEventListener('hashchange', read);
  settings.onChange(() => {
    // Browsers refuse addresses that change all the time.
    if (!waiting) setTimeout(write, 300);
    waiting = true;
  });
}

/** @param {Settings} settings @param {Preset[]} presets */
function makePresets(settings, presets) {
  /** @param {string} title @param {string} text @param {() => void} apply */
  const button = (title, text, apply) => {
    const made = element('button', { type: 'button', title: text }, title);
    made.addEventListener('click', () => {
      apply();
      byId('preset-text').textContent = text;
    });
    byId('presets').append(made);
  };
  button('Default', 'All settings at their default.', () => settings.setDefaults());
  for (const { title, description, values } of presets)
    button(title, `${title}: ${description}.`, () =>
      settings.setAll(settings.attributes.map((a) => values[a.name])),
    );
  settings.onChange(() => (byId('preset-text').textContent = 'Settings of your own.'));
}

/** @param {Settings} settings */
function makeCopies(settings) {
  const texts = {
    'copy-link': () => `${location.href.split('#')[0]}#${linkText(settings)}`,
    'copy-messages': () => messagesText(settings),
    'copy-command': () => commandText(settings),
    'copy-preset': () => presetText(settings, 'Untitled: settings from the page'),
  };
  for (const [id, text] of Object.entries(texts))
    byId(id).addEventListener('click', async () => {
      const shown = byId('copied');
      shown.hidden = false;
      shown.value = text();
      if (shown.value === '') shown.value = '(everything is at its default: no message is needed)';
      try {
        await navigator.clipboard.writeText(shown.value);
        byId('share-status').textContent = 'Copied.';
      } catch {
        shown.select(); // it can be copied by hand
        byId('share-status').textContent = 'Selected below; the browser did not let it be copied.';
      }
    });
}

/** Makes the player at the first start, and plays what is chosen. */
class Transport {
  /** @param {WebAssembly.Module} module @param {Settings} settings @param {SoundChoice} choice */
  constructor(module, settings, choice) {
    this.module = module;
    this.settings = settings;
    this.choice = choice;
    /** @type {Player | null} */
    this.player = null;
    this.playing = false;
    this.choices = 0; // to tell the latest one when an earlier one is ready later
    byId('start').addEventListener('click', () => (this.playing ? this.stop() : this.start()));
    choice.addEventListener('choice', () => {
      if (this.playing) this.playChoice();
    });
    byId('bypass').addEventListener('click', () => this.showBypass(!this.bypassed));
    byId('clear').addEventListener('click', () => this.player?.call('clear'));
    byId('reset').addEventListener('click', () => this.player?.call('reset'));
    byId('volume').addEventListener('input', () => this.showVolume());
    this.bypassed = false;
    this.complained = false;
    this.showVolume();
  }

  /** @private @param {string} text */
  complain(text) {
    notify(text);
    this.complained = true;
  }

  async start() {
    this.show(true);
    try {
      if (!this.player) {
        this.player = await Player.make(this.module, this.settings);
        this.player.context.onstatechange = () => this.contextChanged();
        this.player.setBypass(this.bypassed);
        this.showVolume();
      }
      await this.player.context.resume();
      await this.playChoice();
    } catch (failure) {
      this.show(false);
      this.complain(`The sound did not start: ${reason(failure)}.`);
    }
  }

  stop() {
    this.show(false);
    if (this.choice.name === 'microphone') this.player?.play(null); // its lamp goes out
    this.player?.context.suspend();
  }

  async playChoice() {
    const { player, choice } = this;
    if (!player) return;
    const turn = ++this.choices;
    try {
      if (choice.name === 'nothing') {
        player.play(null);
      } else if (choice.name === 'microphone') {
        if (!(await confirmMicrophone())) return choice.goBack();
        const source = await openMicrophone(player.context);
        if (turn === this.choices && this.playing) player.play(source);
        else source.mediaStream.getTracks().forEach((track) => track.stop());
      } else {
        const buffer = await choice.buffer(player.context.sampleRate);
        if (turn === this.choices) player.playLoop(buffer);
      }
      choice.settle();
    } catch (failure) {
      const denied = failure instanceof DOMException && failure.name === 'NotAllowedError';
      this.complain(
        denied
          ? 'The browser does not let this page use the microphone; its permissions stand beside the address.'
          : `${choice.title} was not played: ${reason(failure)}.`,
      );
      choice.goBack();
    }
  }

  /** A browser may stop a context on its own: another program took the sound device, say. @private */
  contextChanged() {
    const { state } = /** @type {Player} */ (this.player).context;
    if (state === 'running' || !this.playing) return;
    this.show(false);
    this.complain('The browser has paused the sound; Start goes on.');
  }

  /** @private @param {boolean} playing */
  show(playing) {
    this.playing = playing;
    byId('start').textContent = playing ? 'Stop' : 'Start';
    if (playing && this.complained) clearNotice();
    this.complained = false;
  }

  /** @private @param {boolean} on */
  showBypass(on) {
    this.bypassed = on;
    byId('bypass').setAttribute('aria-pressed', String(on));
    this.player?.setBypass(on);
  }

  /** @private */
  showVolume() {
    const db = Number(byId('volume').value);
    byId('volume-text').textContent = `${db} dB`.replace('-', '−');
    this.player?.setVolume(db);
  }
}

/** @returns {Promise<boolean>} */
function confirmMicrophone() {
  const dialog = byId('microphone-warning');
  dialog.returnValue = '';
  dialog.showModal();
  return new Promise((resolve) =>
    dialog.addEventListener('close', () => resolve(dialog.returnValue === 'use'), { once: true }),
  );
}

/** Draws while something plays, at the screen's pace or four times a second. @param {Transport} transport */
function animate(transport) {
  const calm = matchMedia('(prefers-reduced-motion: reduce)');
  const calmPace = 0.25; // s
  const history = new History();
  const meters = {
    input: new Meter(byId('input-meter'), 'Input'),
    output: new Meter(byId('output-meter'), 'Output'),
  };
  const envelope = new EnvelopeDisplay(byId('envelope'), history);
  const delayTime = new DelayDisplay(byId('delay-time'), history);
  /** @type {{input: Levels, output: Levels, spectrum: SpectrumDisplay} | null} */
  let readers = null;
  let last = 0; // s, of the context
  let lastText = 0;

  const draw = () => {
    requestAnimationFrame(draw);
    const { player } = transport;
    if (!player || !transport.playing) return;
    readers ??= {
      input: new Levels(player.inputTaps),
      output: new Levels(player.outputTaps),
      spectrum: new SpectrumDisplay(byId('spectrum'), player.spectrumTap),
    };
    const now = player.context.currentTime;
    if (now - last < (calm.matches ? calmPace : 0.001)) return;
    player.ask();
    const input = readers.input.read(now);
    const output = readers.output.read(now);
    meters.input.show(input, now, now - last);
    meters.output.show(output, now, now - last);
    const delays = player.state?.readDelay ?? [0, 0];
    history.add(now, [...input, ...output].map(decibels), delays);
    envelope.draw(now);
    delayTime.draw(now);
    readers.spectrum.draw();
    if (now - lastText > 0.1) {
      showTexts(player);
      lastText = now;
    }
    last = now;
  };
  /** @param {Player} player */
  const showTexts = ({ state }) => {
    if (!state) return;
    const ms = state.readDelay.map((s) => (s * 1000).toFixed(s < 0.1 ? 1 : 0));
    byId('delay-text').textContent = `left ${ms[0]} ms, right ${ms[1]} ms`;
    const gains = [];
    if (state.gateGain < 1) gains.push(`gate ${Math.round(100 * state.gateGain)} % open`);
    if (state.duckGainDb < -0.05) gains.push(`ducked by ${(-state.duckGainDb).toFixed(1)} dB`);
    byId('gains').textContent = gains.join(', ');
  };
  draw();
  envelope.draw(0);
  delayTime.draw(0);
}

/** @param {WebAssembly.Module} module @param {Settings} settings @param {SoundChoice} choice */
function makeRender(module, settings, choice) {
  const button = byId('render');
  const cancel = byId('cancel');
  const progress = byId('render-progress');
  const link = byId('download');
  let running = new AbortController();
  /** @param {boolean} busy */
  const show = (busy) => {
    button.disabled = busy;
    cancel.hidden = !busy;
    progress.hidden = !busy;
  };
  cancel.addEventListener('click', () => running.abort());
  button.addEventListener('click', async () => {
    running = new AbortController();
    progress.value = 0;
    show(true);
    try {
      const sound = await choice.buffer();
      const name = `${choice.title.replace(/\.[^.]*$/, '').replace(/\W+/g, '-').toLowerCase()}-vesk.wav`;
      const begin = performance.now();
      const rendered = await renderToFile(
        module,
        settings,
        sound,
        (share) => (progress.value = share),
        running.signal,
      );
      const speed = rendered.seconds / ((performance.now() - begin) / 1000);
      URL.revokeObjectURL(link.href);
      link.href = URL.createObjectURL(rendered.wav);
      link.download = name;
      link.textContent = `Save ${name}`;
      link.hidden = false;
      byId('render-text').textContent =
        `${choice.title}: ${rendered.seconds.toFixed(1)} s at ${sound.sampleRate} Hz, rendered ${speed.toFixed(0)} times faster than real time.` +
        (rendered.cut ? ' It was cut after 60 s of tail and still sounds there.' : '');
    } catch (failure) {
      if (!(failure instanceof DOMException && failure.name === 'AbortError'))
        notify(`Nothing was rendered: ${reason(failure)}.`);
      else byId('render-text').textContent = 'Cancelled; nothing was rendered.';
    } finally {
      show(false);
    }
  });
  show(false);
}

/** @param {SoundChoice} choice */
function takeFiles(choice) {
  /** @param {FileList | null | undefined} files */
  const open = async (files) => {
    if (!files || files.length === 0) return;
    if (files.length > 1) notify(`Only the first of ${files.length} files was opened.`);
    try {
      await choice.open(files[0]);
    } catch (failure) {
      notify(reason(failure));
    }
  };
  byId('file').addEventListener('change', () => open(byId('file').files));
  addEventListener('dragover', (event) => {
    event.preventDefault();
    document.body.classList.add('dropping');
  });
  addEventListener('dragleave', () => document.body.classList.remove('dropping'));
  addEventListener('drop', (event) => {
    event.preventDefault();
    document.body.classList.remove('dropping');
    open(event.dataTransfer?.files);
  });
}

async function main() {
  const [attributes, presets] = await Promise.all([
    loadJson('attributes.json'),
    loadJson('presets.json'),
  ]);
  const settings = new Settings(attributes);
  const help = byId('help');
  makeControls(byId('controls'), settings, (text) => (help.textContent = text), notify);
  makePresets(settings, presets);
  makeCopies(settings);
  keepInAddress(settings);
  const choice = new SoundChoice();
  takeFiles(choice);
  const missing = missingFeature();
  if (missing) {
    notify(`No sound here: this browser lacks ${missing}. Settings can be made and copied all the same.`);
    return;
  }
  const module = await loadModule();
  const transport = new Transport(module, settings, choice);
  animate(transport);
  makeRender(module, settings, choice);
  byId('start').disabled = false;
  // For whoever tries things in the console.
  Object.assign(window, { vesk: { settings, transport, module } });
}

main().catch((failure) => notify(`The page did not start: ${reason(failure)}.`));
