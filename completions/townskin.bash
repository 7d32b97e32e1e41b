# Completion in bash for townskin, townskin_flow, townskin_check, townskin_case and townskin_view.

# Directories, and files that end as one of the given patterns.
_townskin_files() {
  local word=$1 pattern
  shift
  mapfile -t COMPREPLY < <(compgen -d -- "$word"; for pattern; do compgen -f -X "!*.$pattern" -- "$word"; done)
  compopt -o filenames 2> /dev/null
}

_townskin() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} program=${COMP_WORDS[0]##*/}
  local options='-h --help --version'
  COMPREPLY=()
  case $program in
    townskin_check) options+=' --json' ;;
    townskin_view)
      case $before in
        -o | --page) _townskin_files "$word" html; return ;;
        --netcdf) _townskin_files "$word" nc; return ;;
        --why) return ;;
      esac
      options+=' -o --page --netcdf --vtk --csv --why --force --quantities'
      ;;
    townskin_case)
      case $before in
        --buildings) _townskin_files "$word" geojson json jsonl; return ;;
        --ground | --trees) _townskin_files "$word" geojson json; return ;;
        --weather) _townskin_files "$word" epw; return ;;
        --day) mapfile -t COMPREPLY < <(compgen -W 'hottest coldest mean-' -- "$word"); return ;;
        --rotate) mapfile -t COMPREPLY < <(compgen -W auto -- "$word"); return ;;
        --from | --to | --crs | --lat | --lon | --lod | --cell | --margin | --radius | --step | \
          --rays | --seed | --threads) return ;;
      esac
      options+=' --buildings --ground --trees --weather --day --from --to -o --output --crs --lat'
      options+=' --lon --lod --cell --margin --radius --rotate --step --rays --seed --threads'
      options+=' --strict --force'
      ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  elif [[ $program == townskin_case && $before != -o && $before != --output ]]; then
    _townskin_files "$word" toml
  elif [[ $program == townskin_* && $program != townskin_flow ]]; then
    _townskin_files "$word"
  fi
}

complete -F _townskin townskin townskin_flow townskin_check townskin_case townskin_view
