// The choice of what is played: a loop, a file, the microphone or nothing.
import { byId, element } from './elements.js';
import { loops } from './sources.js';
import { statedRate } from './wav.js';

const usualRate = 48000; // Hz, for a file that states none

/** @typedef {{title: string, bytes: ArrayBuffer}} SoundFile */

export class SoundChoice extends EventTarget {
  constructor() {
    super();
    this.select = byId('source');
    for (const { name, title } of loops)
      this.select.append(element('option', { value: name }, title));
    this.fileOption = element('option', { value: 'file', hidden: '' });
    this.select.append(
      this.fileOption,
      element('option', { value: 'microphone' }, 'Microphone …'),
      element('option', { value: 'nothing' }, 'Nothing: let it ring out'),
    );
    /** @type {SoundFile | null} */
    this.file = null;
    this.last = this.select.value; // to which a refused microphone goes back
    this.select.addEventListener('change', () => this.dispatchEvent(new Event('choice')));
  }

  /** @returns {string} */
  get name() {
    return this.select.value;
  }

  /** For messages and file names. */
  get title() {
    return this.select.selectedOptions[0].textContent ?? '';
  }

  /** Keeps a choice that plays as the one to go back to. @param {string} name */
  settle(name) {
    this.last = name;
  }

  goBack() {
    this.select.value = this.last;
  }

  /**
   * Chooses a file. Throws a text for people when it is no sound.
   * @param {File} file
   */
  async open(file) {
    const bytes = await file.arrayBuffer();
    try {
      await decode(bytes, usualRate);
    } catch {
      throw new Error(
        `${file.name} was not opened: this browser finds no sound in it. WAV, FLAC, MP3 and Ogg are worth a try.`,
      );
    }
    this.file = { title: file.name, bytes };
    this.fileOption.textContent = file.name;
    this.fileOption.hidden = false;
    this.select.value = 'file';
    this.dispatchEvent(new Event('choice'));
  }

  /**
   * The sound to be played at a rate, or to be rendered at its own.
   * @param {number} [rate] Hz
   * @returns {Promise<AudioBuffer>}
   */
  async buffer(rate) {
    if (this.name === 'file' && this.file)
      return decode(this.file.bytes, rate ?? statedRate(this.file.bytes) ?? usualRate);
    const loop = loops.find(({ name }) => name === this.name);
    if (!loop) throw new Error(`${this.title}: nothing that could be played as a file`);
    return loop.make(rate ?? usualRate);
  }
}

/** @param {ArrayBuffer} bytes @param {number} rate Hz */
function decode(bytes, rate) {
  // A decoder takes the bytes away.
  return new OfflineAudioContext(2, 1, rate).decodeAudioData(bytes.slice(0));
}

/** @param {AudioContext} context */
export async function openMicrophone(context) {
  if (!navigator.mediaDevices)
    throw new Error('The microphone needs a page served by https or from localhost.');
  const stream = await navigator.mediaDevices.getUserMedia({
    audio: { echoCancellation: false, noiseSuppression: false, autoGainControl: false },
  });
  return new MediaStreamAudioSourceNode(context, { mediaStream: stream });
}
