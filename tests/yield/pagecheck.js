// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// Says on the console what of the page cannot be seen or reached, at this width and in these colours.
(() => {
    const say = text => console.log('WRONG at ' + innerWidth + ': ' + text);
    const style = element => getComputedStyle(element);
    const numbers = colour => colour.match(/[\d.]+/g).map(Number);
    const luminance = colour => numbers(colour).slice(0, 3)
        .map(value => value / 255)
        .map(value => value <= 0.04045 ? value / 12.92 : ((value + 0.055) / 1.055) ** 2.4)
        .reduce((sum, value, i) => sum + value * [0.2126, 0.7152, 0.0722][i], 0);
    const contrast = (a, b) => {
        const [dark, light] = [luminance(a), luminance(b)].sort((x, y) => x - y);
        return (light + 0.05) / (dark + 0.05);
    };
    const need = (least, a, b, what) => {
        if (contrast(a, b) < least)
            say(`contrast ${contrast(a, b).toFixed(2)} of ${what}`);
    };
    const ground = element => {
        const colour = style(element).backgroundColor;
        return numbers(colour)[3] === 0 ? ground(element.parentElement) : colour;
    };
    const all = selector => [...document.querySelectorAll(selector)];
    const probe = kind => {
        const shape = document.createElementNS('http://www.w3.org/2000/svg', 'rect');
        shape.setAttribute('class', kind);
        return style(document.querySelector('svg').appendChild(shape));
    };
    const fill = kind => probe(kind).fill;

    const texts = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
    while (texts.nextNode()) {
        const parent = texts.currentNode.parentElement;
        if (texts.currentNode.data.trim() && !parent.closest('svg, script'))
            need(4.5, style(parent).color, ground(parent), texts.currentNode.data);
    }
    for (const text of all('svg text')) {
        const step = [...text.classList].find(name => name.startsWith('on-miss'));
        need(4.5, style(text).fill, step ? fill(step.slice(3)) : ground(text.closest('div')),
             text.textContent);
    }
    for (const shape of all('svg *')) {
        const box = shape.getBBox ? shape.getBBox() : {x: 0, y: 0, width: 0, height: 0};
        const view = shape.ownerSVGElement.viewBox.baseVal;
        if (Math.min(box.x, box.y, view.width - box.x - box.width,
                     view.height - box.y - box.height) < -1)
            say('outside its picture: ' + shape.outerHTML);
    }
    const paper = ground(document.body);
    for (const mark of ['bar', 'dot', 'below', 'above'])
        for (const behind of mark === 'bar' ? [paper] : [paper, fill('within')])
            need(3, fill(mark), behind, mark);
    for (const line of ['trend', 'limit', 'centre', 'axis'])
        need(3, probe(line).stroke, paper, line);
    need(3, probe('control').stroke, fill('ground'), 'a control');
    for (let step = 0; step < 5; ++step)
        need(1.2, fill('miss' + step), fill('miss' + (step + 1)), 'neighbouring colours');

    if (document.documentElement.scrollWidth > innerWidth)
        say('the page is wider than the window');
    for (const area of all('div').filter(div => div.scrollWidth > div.clientWidth + 1))
        if (area.tabIndex !== 0 || !area.getAttribute('aria-label'))
            say('the keyboard does not reach ' + area.outerHTML.slice(0, 80));
    for (const link of all('nav a'))
        if (!document.querySelector(link.getAttribute('href')))
            say('a link leads nowhere: ' + link.textContent);
    console.log('CHECKED');
})();
