// Start and stop, what is played, bypass, clear, reset and volume.
import { byId } from './elements.js';
import { clearNotice, notify, reason } from './notice.js';
import { Player } from './player.js';
import { openMicrophone } from './sound_choice.js';

/** @typedef {import('./settings.js').Settings} Settings */
/** @typedef {import('./sound_choice.js').SoundChoice} SoundChoice */

/** Makes the player at the first start, and plays what is chosen. */
export class Transport {
  /** @param {WebAssembly.Module} module @param {Settings} settings @param {SoundChoice} choice */
  constructor(module, settings, choice) {
    this.module = module;
    this.settings = settings;
    this.choice = choice;
    /** @type {Player | null} */
    this.player = null;
    /** @type {Promise<Player> | null} */
    this.making = null;
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
      this.making ??= this.makePlayer().catch((failure) => {
        this.making = null;
        throw failure;
      });
      const { context } = await this.making;
      await (this.playing ? context.resume() : context.suspend());
      if (this.playing) await this.playChoice();
    } catch (failure) {
      this.show(false);
      this.complain(`The sound did not start: ${reason(failure)}.`);
    }
  }

  /** @private */
  async makePlayer() {
    const player = await Player.make(this.module, this.settings);
    this.player = player;
    player.context.onstatechange = () => this.contextChanged();
    player.setBypass(this.bypassed);
    this.showVolume();
    return player;
  }

  stop() {
    this.show(false);
    if (this.choice.name === 'microphone') this.player?.play(null); // its lamp goes out
    this.player?.context.suspend();
  }

  async playChoice() {
    const { player, choice } = this;
    if (!player) return;
    const { name, title } = choice;
    const turn = ++this.choices;
    const overtaken = () => turn !== this.choices;
    try {
      if (name === 'nothing') {
        player.play(null);
      } else if (name === 'microphone') {
        if (!(await confirmMicrophone())) return choice.goBack();
        const source = await openMicrophone(player.context);
        if (overtaken() || !this.playing) {
          source.mediaStream.getTracks().forEach((track) => track.stop());
          return;
        }
        player.play(source);
      } else {
        const buffer = await choice.buffer(player.context.sampleRate);
        if (overtaken()) return;
        player.playLoop(buffer);
      }
      choice.settle(name);
    } catch (failure) {
      if (overtaken()) return;
      const denied = failure instanceof DOMException && failure.name === 'NotAllowedError';
      this.complain(
        denied
          ? 'The browser does not let this page use the microphone; its permissions stand beside the address.'
          : `${title} was not played: ${reason(failure)}.`,
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
