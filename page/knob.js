// A knob for one number: turned by mouse, wheel, touch and keyboard, or typed in.
import { BadText, positionOf, readNumber, textOf, valueAt } from './attributes.js';
import { element, svg } from './elements.js';

/** @typedef {import('./attributes.js').Attribute} Attribute */

const fullTurn = 200; // pixels of dragging from low to high
const keySteps = new Map([
  ['ArrowUp', 0.01],
  ['ArrowRight', 0.01],
  ['ArrowDown', -0.01],
  ['ArrowLeft', -0.01],
  ['PageUp', 0.1],
  ['PageDown', -0.1],
]);

// The scale leaves a quarter open at the bottom.
const radius = 24;
const circle = 2 * Math.PI * radius;
const scale = 0.75 * circle;

/** @param {string} name class */
function arc(name) {
  return svg('circle', {
    class: name,
    r: String(radius),
    transform: 'rotate(135)',
    'stroke-dasharray': `${scale} ${circle}`,
  });
}

export class Knob {
  /**
   * @param {Attribute} attribute
   * @param {string} label
   * @param {(value: number) => void} onTurn
   * @param {(fault: string) => void} onFault of a text that was typed in
   */
  constructor(attribute, label, onTurn, onFault) {
    this.attribute = attribute;
    this.onTurn = onTurn;
    this.onFault = onFault;
    this.standard = attribute.default[0];
    this.value = this.standard;

    this.filled = arc('filled');
    this.pointer = svg('line', { class: 'pointer', x1: '0', y1: '-9', x2: '0', y2: '-17' });
    const face = svg('circle', { class: 'face', r: '18' });
    this.dial = element('div', {
      class: 'dial',
      role: 'slider',
      tabindex: '0',
      'aria-label': label,
      'aria-valuemin': String(attribute.low),
      'aria-valuemax': String(attribute.high),
    });
    this.dial.append(
      svg(
        'svg',
        { viewBox: '-28 -28 56 52', 'aria-hidden': 'true' },
        arc('scale'),
        this.filled,
        face,
        this.pointer,
      ),
    );
    // Reached from the dial by Enter or by a digit, so that a knob is one stop of the Tab key.
    this.field = element('input', {
      class: 'value',
      type: 'text',
      tabindex: '-1',
      autocomplete: 'off',
      spellcheck: 'false',
      'aria-label': `${label}, exact value`,
    });
    this.element = element('div', { class: 'knob' }, this.dial, this.field);
    this.listen();
    this.show(this.value);
  }

  /** @param {number} value */
  show(value) {
    this.value = value;
    const position = positionOf(this.attribute, value);
    const text = textOf(this.attribute, value);
    this.dial.setAttribute('aria-valuenow', String(value));
    this.dial.setAttribute('aria-valuetext', text);
    this.pointer.setAttribute('transform', `rotate(${270 * position - 135})`);
    // From zero where zero lies inside the range, else from the low end.
    const { low, high } = this.attribute;
    const origin = low < 0 && high > 0 ? positionOf(this.attribute, 0) : 0;
    const length = Math.abs(position - origin) * scale;
    this.filled.setAttribute('stroke-dasharray', `${length} ${circle}`);
    this.filled.setAttribute('stroke-dashoffset', String(-Math.min(position, origin) * scale));
    if (document.activeElement !== this.field) this.field.value = text;
  }

  /** @private @param {number} value */
  turnTo(value) {
    if (value === this.value) return;
    this.show(value);
    this.onTurn(value);
  }

  /** @private @param {number} step share of the range */
  turnBy(step) {
    this.turnTo(valueAt(this.attribute, positionOf(this.attribute, this.value) + step));
  }

  /** @private */
  listen() {
    const { dial, field } = this;
    dial.addEventListener('keydown', (event) => {
      if (event.ctrlKey || event.altKey || event.metaKey) return;
      const step = keySteps.get(event.key);
      if (step !== undefined) this.turnBy(event.shiftKey ? step / 10 : step);
      else if (event.key === 'Home') this.turnTo(this.attribute.low);
      else if (event.key === 'End') this.turnTo(this.attribute.high);
      else if (event.key === 'Delete' || event.key === 'Backspace') this.turnTo(this.standard);
      else if (event.key === 'Enter') field.select();
      else if (/^[-.\d]$/.test(event.key)) {
        field.focus();
        field.value = event.key;
      } else return;
      event.preventDefault();
    });
    dial.addEventListener('dblclick', () => this.turnTo(this.standard));
    // Only with the focus: a page that is scrolled past a knob does not turn it.
    dial.addEventListener(
      'wheel',
      (event) => {
        if (document.activeElement !== dial) return;
        event.preventDefault();
        this.turnBy((event.deltaY < 0 ? 0.01 : -0.01) * (event.shiftKey ? 0.1 : 1));
      },
      { passive: false },
    );
    this.listenToPointer();
    field.addEventListener('focus', () => field.select());
    field.addEventListener('keydown', (event) => {
      if (event.key === 'Escape') field.value = textOf(this.attribute, this.value);
      if (event.key === 'Enter' || event.key === 'Escape') dial.focus();
    });
    field.addEventListener('blur', () => {
      const text = field.value;
      field.value = textOf(this.attribute, this.value);
      if (text === field.value) return;
      try {
        const typed = readNumber(this.attribute, text);
        this.turnTo(typed);
        field.value = textOf(this.attribute, typed);
      } catch (fault) {
        if (!(fault instanceof BadText)) throw fault;
        this.onFault(fault.message);
      }
    });
  }

  /** Up or right turns up; by touch only sideways, since up and down scroll the page. @private */
  listenToPointer() {
    const { dial } = this;
    /** @type {{x: number, y: number} | null} */
    let last = null;
    let position = 0; // not yet rounded, so that slow drags add up
    dial.addEventListener('pointerdown', (event) => {
      if (event.button !== 0) return;
      dial.focus();
      dial.setPointerCapture(event.pointerId);
      last = { x: event.clientX, y: event.clientY };
      position = positionOf(this.attribute, this.value);
      if (event.pointerType === 'mouse') event.preventDefault();
    });
    dial.addEventListener('pointermove', (event) => {
      if (!last) return;
      const up = event.pointerType === 'touch' ? 0 : last.y - event.clientY;
      const way = (event.clientX - last.x + up) * (event.shiftKey ? 0.1 : 1);
      last = { x: event.clientX, y: event.clientY };
      if (way === 0) return;
      position = Math.min(Math.max(position + way / fullTurn, 0), 1);
      this.turnTo(valueAt(this.attribute, position));
    });
    for (const end of ['pointerup', 'pointercancel', 'lostpointercapture'])
      dial.addEventListener(end, () => (last = null));
  }
}
