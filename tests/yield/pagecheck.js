// SPDX-FileCopyrightText: 2026 The Zorvi Assembly Test authors
// SPDX-License-Identifier: GPL-3.0-or-later

// Logs to the console what of the page does not show its figures, or cannot be seen or reached at
// this width and in these colours. figures: the JSON of the same report.
(() => {
    const wrong = text => console.log('WRONG at ' + innerWidth + ': ' + text);
    const all = (selector, root = document) => [...root.querySelectorAll(selector)];
    const same = (seen, expected, what) => {
        const isSame = typeof expected === 'number' ? Math.abs(seen - expected) < 0.1
                                                    : seen === expected;
        if (!isSame)
            wrong(`${what}: ${seen}, not ${expected}`);
    };
    const sameList = (seen, expected, what) => {
        same(seen.length, expected.length, 'number of ' + what);
        expected.forEach((each, i) => same(seen[i], each, `${what} ${i}`));
    };

    // Texts of figures

    const count = number => number.toLocaleString('en');
    const percent = part => part.of === 0 ? '–' : part.count % part.of === 0
        ? 100 * part.count / part.of + '\u00a0%'
        : Math.min(Math.max(100 * part.share, 0.1), 99.9).toFixed(1) + '\u00a0%';
    const share = part => part.of ? `${percent(part)} (${count(part.count)} of ${count(part.of)})`
                                  : '–';
    const units = number => count(number) + (number === 1 ? ' unit' : ' units');
    const control = c => c < 9 ? 'Fader ' + c : c < 40 ? 'Button ' + (c - 9) : 'Rotary ' + (c - 40);
    const texts = (selector, root) => all(selector, root).map(each => each.textContent);

    // Charts

    const number = (shape, name) => Number(shape.getAttribute(name));
    const points = line => line.getAttribute('points').split(' ')
        .map(pair => pair.split(',').map(Number));
    const centreOf = mark => {
        if (mark.tagName === 'circle')
            return [number(mark, 'cx'), number(mark, 'cy')];
        const [x, tip] = points(mark)[0];
        return [x, tip + (mark.classList.contains('above') ? 8 : -8)];
    };
    // The percentage at a height, from the labels of the axis; those have to be in equal steps.
    const percentAxis = chart => {
        const labels = all('.label.end', chart).filter(text => text.textContent.endsWith('%'));
        const values = labels.map(text => parseInt(text.textContent));
        const heights = labels.map(text => number(text, 'y') - 4);
        const perPixel = (values[0] - values[1]) / (heights[1] - heights[0]);
        const at = y => values[0] - (y - heights[0]) * perPixel;
        sameList(heights.map(at), values, 'percentage of the axis');
        sameList(all('.grid', chart).map(line => at(points(line)[0][1])), values, 'grid line');
        same(values[0], 100, 'top of the axis');
        return {at, lowest: values[values.length - 1]};
    };
    const checkYields = (chart, rows, slots, names) => {
        const axis = percentAxis(chart);
        const marks = all('.dot, .below, .above', chart);
        const areas = all('.within', chart);
        const bars = all('.bar', chart);
        const maxUnits = Math.max(...rows.map(row => row.units));
        const pitch = number(areas[0], 'width');
        const ends = all('.trend', chart).map(line => points(line)[1].join());
        const hovers = texts('title', chart);
        const limitLines = all('.limit', chart).map(line => points(line)[0][1]);
        const outside = [];
        rows.forEach((row, i) => {
            const what = names[i] + ': ';
            const limits = row.control_limits;
            const [x, y] = centreOf(marks[i]);
            const [top, height] = [number(areas[i], 'y'), number(areas[i], 'height')];
            const lcl = axis.at(top + height);
            same(marks[i].getAttribute('class'), {'below LCL': 'below', 'above UCL': 'above',
                'within': 'dot'}[limits.position], what + 'mark');
            same(axis.at(y), 100 * row.first_pass_yield.share, what + 'yield');
            same(axis.at(top), Math.max(100 * limits.ucl, axis.lowest), what + 'UCL');
            same(lcl, Math.max(100 * limits.lcl, axis.lowest), what + 'LCL');
            sameList(limitLines.slice(2 * i, 2 * i + 2), [top, top + height], what + 'limit');
            if (row.units === maxUnits && 100 * limits.lcl < axis.lowest)
                wrong(what + 'the LCL is below the axis');
            same(number(areas[i], 'x') + pitch / 2, x, what + 'area');
            same((x - centreOf(marks[0])[0]) / pitch, slots[i], what + 'slot');
            same(ends.includes(x + ',' + y), i > 0 && slots[i] === slots[i - 1] + 1, what + 'line');
            same(100 * number(bars[i], 'height') / 54, 100 * row.units / maxUnits, what + 'bar');
            same(number(bars[i], 'y') + number(bars[i], 'height'), 290, what + 'foot of the bar');
            same(hovers[i], `${names[i]}: ${units(row.units)}, first-pass yield ` +
                share(row.first_pass_yield), 'hover text');
            if (limits.position !== 'within')
                outside.push(percent(row.first_pass_yield));
        });
        sameList(texts('.value', chart), outside, 'percentage beside a mark');
        const centre = points(chart.querySelector('.centre'))[0][1];
        same(axis.at(centre), Math.max(100 * figures.totals.first_pass_yield.share, axis.lowest),
             'centre line');
        same(texts('.label.end', chart).slice(-2).join(), count(maxUnits) + ',units', 'unit axis');
    };
    const dayMs = 24 * 3600 * 1000;
    const monthOf = day => 12 * day.getUTCFullYear() + day.getUTCMonth();
    const checkTrend = chart => {
        const days = figures.trend.map(row => new Date(row.first_tested));
        const slots = days.map(day => figures.period === 'month' ? monthOf(day) - monthOf(days[0])
            : (day - days[0]) / dayMs / (figures.period === 'week' ? 7 : 1));
        const format = options => days.map(day =>
            new Intl.DateTimeFormat('en-GB', {...options, timeZone: 'UTC'}).format(day)
                .replace(/\bSept\b/, 'Sep'));
        const names = texts('#trend td:first-child');
        const dates = figures.period === 'month' ? format({month: 'long', year: 'numeric'})
            : format({day: 'numeric', month: 'short', year: 'numeric'});
        dates.forEach((date, i) => same(names[i].endsWith(date), true, names[i] + ' is ' + date));
        checkYields(chart, figures.trend, slots, names);
        const labels = format(figures.period === 'month' ? {month: 'short', year: '2-digit'}
                                                         : {day: 'numeric', month: 'short'});
        const seen = texts('.label.middle', chart);
        sameList(seen, labels.filter(label => seen.includes(label)), 'label');
        same(seen[0], labels[0], 'first label');
    };
    const checkStations = chart => {
        const names = figures.stations.map(row => row.station);
        checkYields(chart, figures.stations, names.map((_, i) => 2 * i), names);
        const length = Math.floor(120 / names.length);
        sameList(texts('.label.middle', chart), names.map(name =>
            name.length <= length ? name : '…' + name.slice(1 - length)), 'name of a station');
    };
    const checkPareto = chart => {
        const rows = figures.pareto.slice(0, 14);
        const {at} = percentAxis(chart);
        sameList(all('.bar', chart).map(bar => at(number(bar, 'y'))),
                 rows.map(row => 100 * row.share), 'Pareto bar');
        const sums = rows.map(row => 100 * row.cumulative);
        sameList(points(chart.querySelector('.trend')).map(([, y]) => at(y)), sums, 'sum');
        sameList(all('.dot', chart).map(dot => at(number(dot, 'cy'))), sums, 'dot');
        sameList(texts('.label.middle', chart), rows.map(row => control(row.component)), 'name');
        sameList(texts('.value', chart), rows.map(row => count(row.failed_units.count)), 'value');
    };
    const checkBands = (chart, i) => {
        const component = figures.pareto[i].component;
        const rows = figures.missed_bands.filter(row => row.component === component);
        const counts = rows.map(row => row.failed_units);
        sameList(all('.bar', chart).map(bar => 100 * number(bar, 'height') / 78),
                 counts.map(each => 100 * each / Math.max(...counts)), 'bar of a band');
        sameList(texts('.label', chart), rows.map(({band}) => component > 8 && component < 40
            ? ['released', 'pressed'][band] : String(10 * band)), 'name of a band');
        sameList(texts('.value', chart), counts.map(each => each ? count(each) : ''), 'band');
        same(chart.parentElement.querySelector('h3').textContent,
             `${control(component)} (component ${component})`, 'heading');
    };
    const colourOf = part => part.of === 0 ? 'untested'
        : 'failed' + [0, 1, 2, 5, 10].filter(most => 100 * part.count > most * part.of).length;
    const checkHeatMap = chart => {
        const rows = figures.controls.filter(row => row.component !== 39);
        const cells = all('g', chart);
        rows.forEach(({component, failed_units: part}, i) => {
            const colour = colourOf(part);
            const [figure, rate] = [cells[i].nextElementSibling,
                                    cells[i].nextElementSibling.nextElementSibling];
            same(cells[i].querySelector('rect').getAttribute('class'), 'control ' + colour,
                 'colour of ' + component);
            same(cells[i].querySelector('title').textContent, `${control(component)} (component ` +
                `${component}): ${part.of ? share(part) : 'not tested here'}`, 'hover text');
            same(figure.textContent, String(component), 'component');
            same(rate.textContent, part.of ? percent(part) : '', 'rate of ' + component);
            for (const text of [figure, rate])
                same(text.classList.contains('on-' + colour), true, 'text on ' + colour);
        });
        sameList(texts('.label', chart),
                 ['none', ...[1, 2, 5, 10, 100].map(most => `up to ${most} %`)], 'key');
    };
    const checks = {'trend': checkTrend, 'stations': checkStations, 'heat-map': checkHeatMap,
                    'pareto': checkPareto, 'bands': checkBands};
    for (const [id, check] of Object.entries(checks)) {
        const charts = all(`#${id} svg`);
        const rows = {'pareto': figures.pareto, 'bands': figures.pareto, 'trend': figures.trend}[id];
        same(charts.length, id === 'bands' ? Math.min(3, rows.length) : rows && !rows.length ? 0 : 1,
             'charts of ' + id);
        charts.forEach(check);
    }

    const tables = {
        'status': ['last_logs', 'recent_days'], 'not-passed': ['not_passed'], 'trend': ['trend'],
        'stations': ['stations'], 'heat-map': ['controls'], 'pareto': ['pareto'],
        'bands': ['missed_bands'], 'aborted': ['aborted'], 'retests': ['attempts_by_number'],
        'retested': ['retested'],
    };
    for (const [id, names] of Object.entries(tables))
        sameList(all(`#${id} tbody`).map(body => body.rows.length),
                 names.map(name => figures[name].length).filter(rows => rows), 'rows of ' + id);
    same(all('details > summary').length, all('summary').length, 'tables that open');
    for (const cell of all('td'))
        same(cell.className === 'bad', /^(no log|▼|failed$|aborted$)/.test(cell.textContent),
             'in red: ' + cell.textContent);

    // What can be seen

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
            wrong(`contrast ${contrast(a, b).toFixed(2)} of ${what}`);
    };
    const ground = element => {
        const colour = style(element).backgroundColor;
        return numbers(colour)[3] === 0 ? ground(element.parentElement) : colour;
    };
    const probe = kind => {
        const shape = document.createElementNS('http://www.w3.org/2000/svg', 'rect');
        shape.setAttribute('class', kind);
        return style(document.querySelector('svg').appendChild(shape));
    };
    const fill = kind => probe(kind).fill;

    for (const text of all('svg text')) {
        const step = [...text.classList].find(name => name.startsWith('on-failed'));
        need(4.5, style(text).fill, step ? fill(step.slice(3)) : ground(text.closest('div')),
             text.textContent);
    }
    for (const shape of all('svg *')) {
        const box = shape.getBBox ? shape.getBBox() : {x: 0, y: 0, width: 0, height: 0};
        const view = shape.ownerSVGElement.viewBox.baseVal;
        if (Math.min(box.x, box.y, view.width - box.x - box.width,
                     view.height - box.y - box.height) < -1)
            wrong('outside its chart: ' + shape.outerHTML);
    }
    for (const chart of all('svg'))
        all('.label.middle', chart).map(text => text.getBBox()).forEach((box, i, boxes) => {
            if (i > 0 && box.x < boxes[i - 1].x + boxes[i - 1].width)
                wrong('labels overlap: ' + texts('.label.middle', chart)[i]);
        });
    const paper = ground(document.body);
    for (const mark of ['bar', 'dot', 'below', 'above'])
        for (const behind of mark === 'bar' ? [paper] : [paper, fill('within')])
            need(3, fill(mark), behind, mark);
    for (const line of ['trend', 'limit', 'centre', 'axis'])
        need(3, probe(line).stroke, paper, line);
    need(3, probe('control').stroke, fill('ground'), 'a control');
    for (let step = 0; step < 5; ++step)
        need(1.2, fill('failed' + step), fill('failed' + (step + 1)), 'neighbouring colours');

    if (document.documentElement.scrollWidth > innerWidth)
        wrong('the page is wider than the window');
    for (const area of all('div').filter(div => div.scrollWidth > div.clientWidth + 1))
        if (area.tabIndex !== 0 || !area.getAttribute('aria-label'))
            wrong('the keyboard does not reach ' + area.outerHTML.slice(0, 80));
    for (const link of all('nav a'))
        if (!document.querySelector(link.getAttribute('href')))
            wrong('a link leads nowhere: ' + link.textContent);
    console.log('CHECKED');
})();
